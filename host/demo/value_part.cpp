#include "host/demo/demo_parts.h"
#include "host/demo/queries.h"
#include "host/records/record_text.h"
#include "host/records/value_builder.h"

#include <QStringList>

#include <algorithm>
#include <functional>
#include <iterator>
#include <set>

namespace host {

namespace {

using Repository = interfaces::IEAVRepository;
using Values = ReadBack<model::dev_value>;

/// The demo's values of the device, of any time.
model::filter_eav demoValues(int device) {
    auto filter = anyTime<model::filter_eav>({device});
    filter.tags = {demoSource()};
    return filter;
}

/// The OBIS codes under which the meter counts energy.
std::list<QString> energyRegisters(const Values& values) {
    std::set<QString> codes;
    for (const auto& value : values.written()) {
        const auto unit = value.extended_data.object().value(QLatin1String("unit")).toString();
        if (unit == QLatin1String("kWh") && value.value.type() == QVariant::Double) {
            codes.insert(value.obis_code);
        }
    }
    return {codes.begin(), codes.end()};
}

/// The values of one OBIS code, in their order.
template <class Records>
std::list<model::dev_value> ofCode(const Records& records, const QString& code) {
    std::list<model::dev_value> values;
    std::ranges::copy_if(records, std::back_inserter(values),
                         [&code](const auto& value) { return value.obis_code == code; });
    return values;
}

/// Checks the first and the last value of a code, which the store gives last first.
void checkFirstAndLast(Values& values, int device, const QString& code,
                       std::list<model::dev_value> lastFirst) {
    const auto written = ofCode(values.written(), code);
    const auto [first, last] = std::ranges::minmax(written, {}, &model::dev_value::timestamp);
    if (first.timestamp == last.timestamp && lastFirst.size() == 2) {
        // A single reading is both the first and the last.
        lastFirst.pop_back();
    }
    values.check(QStringLiteral("first and last of ") + code,
                 [&, begin = first.timestamp, end = last.timestamp](const model::dev_value& value) {
                     return value.obis_code == code &&
                            (value.timestamp == begin || value.timestamp == end);
                 },
                 {{device, lastFirst}});
}

void checkAndShowEnergy(Repository& repository, int device, Values& values, Console& console) {
    auto filter = demoValues(device);
    filter.first_last = true;
    filter.obis_codes = energyRegisters(values);
    const auto returned = (*repository.GetValues(filter))[device];

    const auto energy = [](double kWh) {
        return QString(QString::number(kWh, 'f', 3) + QStringLiteral(" kWh"));
    };
    std::vector<QStringList> rows;
    for (const auto& code : filter.obis_codes) {
        const auto lastFirst = ofCode(returned, code);
        if (!lastFirst.empty()) {
            const double first = lastFirst.back().value.toDouble();
            const double last = lastFirst.front().value.toDouble();
            rows.push_back({code, energy(first), energy(last), energy(last - first)});
        }
        checkFirstAndLast(values, device, code, lastFirst);
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
    const auto curve = (*repository.GetValues(filter))[device];
    if (curve.empty()) {
        return;
    }
    const auto [least, most] = std::ranges::minmax_element(
        curve, {}, [](const auto& value) { return value.value.toDouble(); });
    console.line(QStringLiteral("Power (1-0:1.7.0) from %1 to %2 UTC: %3 values between %4 kW and "
                                "%5 kW; `kelvro-host plot` draws them.")
                     .arg(timeText(curve.back().timestamp), timeText(curve.front().timestamp))
                     .arg(curve.size())
                     .arg(least->value.toDouble())
                     .arg(most->value.toDouble()));
}

void readBack(Repository& repository, int device, Values& values, Console& console) {
    using model::dev_value;
    using model::filter_eav;
    const auto ask = [&](const filter_eav& filter) { return repository.GetValues(filter); };
    const auto filter = demoValues(device);

    values.check(QStringLiteral("by device"), everyRecord, *ask(filter));
    checkEach(values, QStringLiteral("by OBIS code %1"), &dev_value::obis_code, filter,
              &filter_eav::obis_codes, ask);
    checkPeriod(values, QStringLiteral("by period"), &dev_value::timestamp, filter, ask);
    checkAndShowEnergy(repository, device, values, console);
    showPower(repository, device, console);
}

} // namespace

Part<model::dev_value> valuePart(Repository& repository, const MeterReadingFile& readings,
                                 const QDateTime& start) {
    const int device = deviceNumber(readings);
    const auto filter = demoValues(device);
    Part<model::dev_value> part;
    part.kind = QStringLiteral("meter readings");
    part.heading = QStringLiteral("Meter readings");
    part.remark = QStringLiteral("Device %1, after the last eight digits of the meter's number.")
                      .arg(deviceText(device));
    part.records = buildValues(readings.records, device, start);
    part.rejected = static_cast<int>(readings.rejected.size());
    part.find = [&repository, filter] { return *repository.GetValues(filter); };
    part.remove = [&repository, filter] { repository.DeleteValues(filter); };
    part.store = [&repository](std::span<model::dev_value> batch) {
        repository.SaveValues({batch.begin(), batch.end()});
    };
    part.batchSize = 500;
    part.readBack = std::bind_front(readBack, std::ref(repository), device);
    return part;
}

} // namespace host
