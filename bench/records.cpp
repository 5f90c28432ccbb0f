#include "bench/records.h"

#include "host/failure.h"
#include "host/input/meter_reading.h"
#include "host/input/telegram.h"
#include "host/records/message_builder.h"
#include "host/records/value_builder.h"

#include <QDateTime>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>
#include <iostream>
#include <set>

namespace bench {

namespace {

constexpr qint64 lifetimeSecs = qint64{12} * 60 * 60;

QDateTime start() {
    static const QDateTime time =
        QDateTime::fromSecsSinceEpoch(QDateTime::currentSecsSinceEpoch(), Qt::UTC);
    return time;
}

template <class Record>
host::RecordFile<Record> fileOf(const char* name, host::RecordFile<Record> (*read)(QIODevice&)) {
    host::Console console(std::cerr, host::Console::Kind::Plain);
    auto file = host::openRecords(QStringLiteral(KELVRO_HOST_DATA_DIR "/") + QLatin1String(name),
                                  read, console);
    if (!file.rejected.empty()) {
        throw host::Failure(file.name + QStringLiteral(" has other lines than records"));
    }
    return file;
}

/// A reading some rounds later: as many decimals, up to three, and whole if it was.
double grown(double reading, std::size_t rounds) {
    constexpr double thousandths = 1000;
    return static_cast<double>(qRound64((reading + static_cast<double>(rounds)) * thousandths)) /
           thousandths;
}

/// Of another meter of the same make.
QJsonObject grown(QJsonObject readings, std::size_t rounds) {
    for (auto reading = readings.begin(); reading != readings.end(); ++reading) {
        if (reading.value().isDouble()) {
            reading.value() = grown(reading.value().toDouble(), rounds);
        }
    }
    return readings;
}

/// With a member that no other record of a list has the like of.
QJsonDocument withNumber(const QJsonDocument& document, const QString& key,
                         const QJsonValue& number) {
    QJsonObject object = document.object();
    object.insert(key, number);
    return QJsonDocument{object};
}

const std::vector<model::message>& telegramMessages() {
    static const auto messages =
        host::buildMessages(fileOf("radio_telegrams.ndjson", host::readTelegrams).records, start());
    return messages;
}

const std::vector<model::dev_value>& meterValues() {
    static const auto values = [] {
        const auto file = fileOf("meter_readings.ndjson", host::readMeterReadings);
        return host::buildValues(file.records, host::deviceNumber(file), start());
    }();
    return values;
}

model::dev_value later(model::dev_value value, qint64 secs, std::size_t rounds) {
    value.timestamp = value.timestamp.addSecs(secs);
    if (value.value.type() == QVariant::Double) {
        value.value = grown(value.value.toDouble(), rounds);
    }
    return value;
}

int deviceOf(std::size_t index) {
    return 1 + static_cast<int>(index % 10);
}

model::dl_queues::element element(int device, int number) {
    model::dl_queues::element element;
    element.data = {{QStringLiteral("request"), QStringLiteral("read registers")},
                    {QStringLiteral("first"), number},
                    {QStringLiteral("device"), device}};
    element.type = QStringLiteral("read");
    element.db_id = QStringLiteral("65f0c0ffee65%1%2")
                        .arg(device, 8, 16, QLatin1Char('0'))
                        .arg(number, 4, 16, QLatin1Char('0'));
    element.status = model::dl_queues::status::WAIT;
    return element;
}

QJsonObject deeplyNested(int number) {
    QJsonObject deep{{QStringLiteral("reading"), number + 0.5}};
    for (int level = 0; level < 40; ++level) {
        deep = {{QStringLiteral("level"), level}, {QStringLiteral("next"), deep}};
    }
    return deep;
}

QJsonObject withManyKeys(int number) {
    QJsonObject wide;
    for (int i = 0; i < 400; ++i) {
        const double reading = number + i;
        wide.insert(QStringLiteral("quantity_%1").arg(i), i % 2 == 0 ? reading + 0.125 : reading);
    }
    return wide;
}

QJsonObject withLongTexts(int number) {
    const auto sentence = QStringLiteral(u"Zähler %1 geprüft, Siegel %2 unversehrt. ");
    QJsonObject texts;
    for (int i = 0; i < 8; ++i) {
        texts.insert(QStringLiteral("note_%1").arg(i), sentence.arg(number).arg(i).repeated(60));
    }
    return texts;
}

QJsonObject withLongLists(int number) {
    QJsonArray profile;
    for (int i = 0; i < 400; ++i) {
        profile.append(QJsonArray{1'553'436'000 + 900 * i, number + (i % 97) / 4.0});
    }
    return {{QStringLiteral("profile"), profile}};
}

} // namespace

std::vector<model::message> messages(std::size_t count, quint64 firstId, std::size_t first) {
    const auto& originals = telegramMessages();
    std::vector<model::message> messages;
    messages.reserve(count);
    for (std::size_t i = first; i < first + count; ++i) {
        model::message message = originals[i % originals.size()];
        message.unique_id = firstId + i;
        message.timestamp = start().addSecs(-static_cast<qint64>(i));
        message.time_detected = message.timestamp.addSecs(-2);
        message.data = QJsonDocument{grown(message.data.object(), i / originals.size())};
        // Not every make sends a quantity.
        message.data = withNumber(message.data, QStringLiteral("id"),
                                  QStringLiteral("%1").arg(10'000'000 + i));
        message.extended_data =
            withNumber(message.extended_data, QStringLiteral("line"), static_cast<int>(i + 1));
        // Nobody decodes the last bytes again.
        message.payload = message.payload.chopped(8) + QByteArray::number(quint64{10'000'000} + i);
        messages.push_back(std::move(message));
    }
    return messages;
}

std::vector<int> devicesOf(const std::vector<model::message>& messages) {
    std::set<int> devices;
    for (const model::message& message : messages) {
        devices.insert(message.modem_id);
    }
    return {devices.begin(), devices.end()};
}

std::vector<model::dev_value> values(std::size_t count, std::size_t first) {
    constexpr qint64 roundSecs = 300;
    const auto& originals = meterValues();
    std::vector<model::dev_value> values;
    values.reserve(count);
    for (std::size_t i = first; i < first + count; ++i) {
        const std::size_t round = i / originals.size();
        auto value =
            later(originals[i % originals.size()], roundSecs * static_cast<qint64>(round), round);
        value.modem_id = deviceOf(i / 32);
        value.extended_data =
            withNumber(value.extended_data, QStringLiteral("line"), static_cast<int>(i + 1));
        values.push_back(std::move(value));
    }
    return values;
}

std::vector<QString> numericObisCodes(std::size_t count) {
    std::vector<QString> codes;
    for (const model::dev_value& value : meterValues()) {
        if (codes.size() < count && value.value.type() == QVariant::Double &&
            std::ranges::find(codes, value.obis_code) == codes.end()) {
            codes.push_back(value.obis_code);
        }
    }
    return codes;
}

std::vector<model::dev_value> numericValues(int devices, const std::vector<QString>& obisCodes) {
    std::vector<model::dev_value> values;
    for (int device = 1; device <= devices; ++device) {
        for (const QString& obisCode : obisCodes) {
            const auto& original =
                *std::ranges::find(meterValues(), obisCode, &model::dev_value::obis_code);
            for (const qint64 secs : {0, 60}) {
                values.push_back(later(original, secs, static_cast<std::size_t>(device)));
                values.back().modem_id = device;
                values.back().extended_data =
                    withNumber(original.extended_data, QStringLiteral("line"),
                               static_cast<int>(values.size()));
            }
        }
    }
    return values;
}

std::vector<model::dev_event> events(std::size_t count, std::size_t first) {
    static const std::vector<QString> texts{
        QStringLiteral("POWER_LOW"),    QStringLiteral("LEAKAGE"),
        QStringLiteral("COVER_OPENED"), QStringLiteral("MAGNETIC_FIELD"),
        QStringLiteral("NO_SUPPLY"),    QStringLiteral("TEMPERATURE_HIGH"),
    };
    std::vector<model::dev_event> events;
    events.reserve(count);
    for (std::size_t i = first; i < first + count; ++i) {
        model::dev_event event;
        event.modem_id = deviceOf(i);
        event.timestamp = start().addSecs(-static_cast<qint64>(i));
        event.event_code = static_cast<int>(i % texts.size());
        event.message_id = QString::number(quint64{1'700'000'000'000} + i);
        event.message = texts[i % texts.size()];
        event.extended_data = QJsonDocument{QJsonObject{
            {QStringLiteral("source"), QStringLiteral("status word")},
            {QStringLiteral("count"), static_cast<int>(i)},
        }};
        event.parameter = static_cast<int>(i % 8);
        event.ttl = start().addSecs(lifetimeSecs);
        events.push_back(std::move(event));
    }
    return events;
}

std::vector<model::dl_message> commands(std::size_t count, std::size_t perDevice,
                                        std::size_t first) {
    std::vector<model::dl_message> commands;
    commands.reserve(count);
    for (std::size_t i = first; i < first + count; ++i) {
        model::dl_message command;
        command.modem_id = 1 + static_cast<int>(i / perDevice);
        command.timeout = 60;
        command.ttl = start().addSecs(lifetimeSecs);
        command.timestamp = start().addSecs(-static_cast<qint64>(i));
        command.api_key = QStringLiteral("bench");
        const int second = static_cast<int>(i);
        command.data = {
            {QStringLiteral("request"), QStringLiteral("read registers")},
            {QStringLiteral("first"), static_cast<int>(i)},
            {QStringLiteral("count"), 8},
            {QStringLiteral("schedule"),
             QJsonObject{{QStringLiteral("window"), QJsonArray{second, second + 28'800}},
                         {QStringLiteral("retry"), i % 2 == 0}}},
        };
        command.payload = QByteArray::number(static_cast<qulonglong>(i) * 2'654'435'761U, 16)
                              .rightJustified(24, '0');
        commands.push_back(std::move(command));
    }
    return commands;
}

model::dl_queues queues(int device) {
    model::dl_queues queues;
    for (const auto& name : {QStringLiteral("commands"), QStringLiteral("clock")}) {
        model::dl_queues::queue queue;
        queue.repeat = 3;
        queue.timeout = 60;
        queue.status = model::dl_queues::status::WAIT;
        for (int i = 0; i < 3; ++i) {
            queue.elements.insert(QString::number(i), element(device, i));
        }
        queues.dl.insert(name, queue);
    }
    queues.status = model::dl_queues::status::WAIT;
    return queues;
}

std::vector<MadeUp> madeUpDocuments() {
    return {{"deeply nested", deeplyNested},
            {"400 keys", withManyKeys},
            {"long texts", withLongTexts},
            {"lists", withLongLists}};
}

std::vector<model::message> messagesWith(const std::function<QJsonObject(int number)>& data,
                                         std::size_t count) {
    auto all = messages(count, 0);
    int number = 0;
    for (model::message& message : all) {
        message.data = QJsonDocument{data(number++)};
    }
    return all;
}

} // namespace bench
