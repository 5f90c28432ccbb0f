#include "host/values_demo.h"

#include "host/demo_mark.h"
#include "host/read_back.h"
#include "host/value_builder.h"

#include <QStringList>

#include <algorithm>
#include <iterator>
#include <limits>
#include <set>

namespace host {

namespace {

using Repository = interfaces::IEAVRepository;
using Values = ReadBack<model::dev_value>;

constexpr std::ptrdiff_t batchSize = 500;

/// The demo's values of the device, of any time.
model::filter_eav demoValues(int device) {
    model::filter_eav filter;
    filter.modem_ids = {device};
    filter.tags = {demoSource()};
    filter.begin = beginOfTime();
    filter.end = endOfTime();
    return filter;
}

QString unitOf(const model::dev_value& value) {
    return value.extended_data.object().value(QLatin1String("unit")).toString();
}

std::set<QString> obisCodes(const Values& values) {
    std::set<QString> codes;
    for (const auto& value : values.written()) {
        codes.insert(value.obis_code);
    }
    return codes;
}

/// The OBIS codes under which the meter counts energy.
std::set<QString> energyRegisters(const Values& values) {
    std::set<QString> codes;
    for (const auto& value : values.written()) {
        if (unitOf(value) == QLatin1String("kWh") && value.value.type() == QVariant::Double) {
            codes.insert(value.obis_code);
        }
    }
    return codes;
}

void deleteEarlierDemo(Repository& repository, int device, Console& console) {
    const auto filter = demoValues(device);
    const auto stored = repository.GetValues(filter);
    if (!stored->empty()) {
        repository.DeleteValues(filter);
        console.line(QStringLiteral("Deleted %1 values of an earlier demo.")
                         .arg(stored->begin()->second.size()));
    }
}

void save(Repository& repository, Values& values, Console& console) {
    const auto& written = values.written();
    auto progress =
        console.progress(QStringLiteral("Saving values"), static_cast<int>(written.size()));
    for (auto first = written.begin(); first != written.end();) {
        const auto last = first + std::min(batchSize, written.end() - first);
        repository.SaveValues({first, last});
        const auto count = static_cast<int>(last - first);
        values.countStored(count);
        progress.advance(count);
        first = last;
    }
}

void checkByObisCode(Repository& repository, int device, const QString& code, Values& values) {
    auto filter = demoValues(device);
    filter.obis_codes = {code};
    values.check(
        QStringLiteral("by OBIS code ") + code,
        [&code](const model::dev_value& value) { return value.obis_code == code; },
        *repository.GetValues(filter));
}

/// Asks for the middle half of the time that the readings cover.
void checkByPeriod(Repository& repository, int device, Values& values) {
    const auto& written = values.written();
    const auto [oldest, newest] =
        std::ranges::minmax_element(written, [](const auto& left, const auto& right) {
            return left.timestamp < right.timestamp;
        });
    const auto quarterSecs = oldest->timestamp.secsTo(newest->timestamp) / 4;
    auto filter = demoValues(device);
    filter.begin = oldest->timestamp.addSecs(quarterSecs);
    filter.end = newest->timestamp.addSecs(-quarterSecs);
    values.check(
        QStringLiteral("by period"),
        [&filter](const model::dev_value& value) {
            return value.timestamp >= filter.begin && value.timestamp <= filter.end;
        },
        *repository.GetValues(filter));
}

/// The values of one OBIS code, newest first.
std::list<model::dev_value> ofCode(const std::map<int, std::list<model::dev_value>>& returned,
                                   int device, const QString& code) {
    std::list<model::dev_value> values;
    if (const auto ofDevice = returned.find(device); ofDevice != returned.end()) {
        std::ranges::copy_if(ofDevice->second, std::back_inserter(values),
                             [&code](const auto& value) { return value.obis_code == code; });
    }
    return values;
}

std::pair<qint64, qint64> firstAndLastSecs(const Values& values, const QString& code) {
    auto first = std::numeric_limits<qint64>::max();
    auto last = std::numeric_limits<qint64>::min();
    for (const auto& value : values.written()) {
        if (value.obis_code == code) {
            first = std::min(first, value.timestamp.toSecsSinceEpoch());
            last = std::max(last, value.timestamp.toSecsSinceEpoch());
        }
    }
    return {first, last};
}

void checkAndShowEnergy(Repository& repository, int device, Values& values, Console& console) {
    const auto codes = energyRegisters(values);
    auto filter = demoValues(device);
    filter.first_last = true;
    filter.obis_codes = {codes.begin(), codes.end()};
    const auto returned = repository.GetValues(filter);

    std::vector<QStringList> rows;
    const auto energy = [](double kWh) -> QString {
        return QString::number(kWh, 'f', 3) + QStringLiteral(" kWh");
    };
    for (const auto& code : codes) {
        auto firstLast = ofCode(*returned, device, code);
        if (!firstLast.empty()) {
            const auto& last = firstLast.front();
            const auto& first = firstLast.back();
            rows.push_back({code, energy(first.value.toDouble()), energy(last.value.toDouble()),
                            energy(last.value.toDouble() - first.value.toDouble())});
        }
        const auto [firstSecs, lastSecs] = firstAndLastSecs(values, code);
        if (firstSecs == lastSecs && firstLast.size() == 2) {
            // A single reading is both the first and the last.
            firstLast.pop_back();
        }
        values.check(QStringLiteral("first and last of ") + code,
                     [&, first = firstSecs, last = lastSecs](const model::dev_value& value) {
                         const auto secs = value.timestamp.toSecsSinceEpoch();
                         return value.obis_code == code && (secs == first || secs == last);
                     },
                     {{device, firstLast}});
    }
    console.table({{QStringLiteral("Energy register")},
                   {QStringLiteral("First"), true},
                   {QStringLiteral("Last"), true},
                   {QStringLiteral("Consumption"), true}},
                  rows);
}

void showPower(Repository& repository, int device, Console& console) {
    auto filter = demoValues(device);
    filter.obis_codes = {QStringLiteral("1-0:1.7.0")};
    const auto returned = repository.GetValues(filter);
    if (returned->empty()) {
        return;
    }
    const auto& curve = returned->begin()->second;
    const auto [least, most] =
        std::ranges::minmax_element(curve, [](const auto& left, const auto& right) {
            return left.value.toDouble() < right.value.toDouble();
        });
    const auto time = [](const model::dev_value& value) {
        return value.timestamp.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
    };
    console.line(QStringLiteral("Power (1-0:1.7.0) from %1 to %2 UTC: %3 values between %4 kW and "
                                "%5 kW; `kelvro-host plot` draws them.")
                     .arg(time(curve.back()), time(curve.front()))
                     .arg(curve.size())
                     .arg(least->value.toDouble())
                     .arg(most->value.toDouble()));
}

} // namespace

Accounting runValuesDemo(Repository& repository, const MeterReadingFile& file,
                         const QDateTime& start, Console& console) {
    const int device = deviceNumber(file.records);
    Values values(buildValues(file.records, device, start));

    console.line(QStringLiteral("Device %1, after the last eight digits of the meter's number.")
                     .arg(device, 8, 10, QLatin1Char('0')));
    deleteEarlierDemo(repository, device, console);
    save(repository, values, console);
    values.check(
        QStringLiteral("by device"), [](const model::dev_value& /*value*/) { return true; },
        *repository.GetValues(demoValues(device)));
    for (const auto& code : obisCodes(values)) {
        checkByObisCode(repository, device, code, values);
    }
    checkByPeriod(repository, device, values);
    checkAndShowEnergy(repository, device, values, console);
    showPower(repository, device, console);

    console.complaints(values.complaints());
    return values.accounting(file.linesRead, static_cast<int>(file.rejected.size()));
}

} // namespace host
