#include "bench/records.h"

#include "host/failure.h"
#include "host/input/meter_reading.h"
#include "host/input/telegram.h"
#include "host/records/message_builder.h"
#include "host/records/value_builder.h"

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

namespace bench {

namespace {

constexpr qint64 lifetimeSecs = 12 * 60 * 60;

QDateTime start() {
    static const QDateTime time =
        QDateTime::fromSecsSinceEpoch(QDateTime::currentSecsSinceEpoch(), Qt::UTC);
    return time;
}

template <typename Read>
auto fileOf(const char* fileName, Read read) {
    QFile file(QStringLiteral(KELVRO_HOST_DATA_DIR "/") + QLatin1String(fileName));
    if (!file.open(QIODevice::ReadOnly)) {
        throw host::Failure(
            QStringLiteral("cannot read %1: %2").arg(file.fileName(), file.errorString()));
    }
    auto content = read(file);
    if (content.records.empty() || !content.rejected.empty()) {
        throw host::Failure(QStringLiteral("%1: %2 records, %3 lines rejected")
                                .arg(file.fileName())
                                .arg(content.records.size())
                                .arg(content.rejected.size()));
    }
    return content;
}

QString text(const char* prefix, std::size_t number) {
    return QLatin1String(prefix) + QString::number(number);
}

int deviceOf(std::size_t index) {
    return 1 + static_cast<int>(index % 10);
}

} // namespace

std::vector<model::message> telegramMessages() {
    return host::buildMessages(fileOf("radio_telegrams.ndjson", host::readTelegrams).records,
                               start());
}

std::vector<model::message> messages(std::size_t count, quint64 firstId) {
    const auto originals = telegramMessages();
    std::vector<model::message> messages;
    messages.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        model::message message = originals[i % originals.size()];
        message.unique_id = firstId + i;
        message.timestamp = start().addSecs(-static_cast<qint64>(i));
        message.time_detected = message.timestamp.addSecs(-2);
        messages.push_back(std::move(message));
    }
    return messages;
}

std::vector<model::dev_value> meterValues() {
    const auto file = fileOf("meter_readings.ndjson", host::readMeterReadings);
    return host::buildValues(file.records, host::deviceNumber(file), start());
}

std::vector<model::dev_value> values(std::size_t count) {
    const auto originals = meterValues();
    constexpr qint64 roundSecs = 300;
    std::vector<model::dev_value> values;
    values.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        model::dev_value value = originals[i % originals.size()];
        value.modem_id = deviceOf(i / 32);
        value.timestamp =
            value.timestamp.addSecs(roundSecs * static_cast<qint64>(i / originals.size()));
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
    const auto originals = meterValues();
    std::vector<model::dev_value> values;
    for (int device = 1; device <= devices; ++device) {
        for (const QString& obisCode : obisCodes) {
            for (const qint64 laterSecs : {0, 60}) {
                model::dev_value value =
                    *std::ranges::find(originals, obisCode, &model::dev_value::obis_code);
                value.modem_id = device;
                value.timestamp = value.timestamp.addSecs(laterSecs);
                values.push_back(std::move(value));
            }
        }
    }
    return values;
}

std::vector<model::dev_event> events(std::size_t count) {
    static const std::vector<QString> texts{
        QStringLiteral("POWER_LOW"),    QStringLiteral("LEAKAGE"),
        QStringLiteral("COVER_OPENED"), QStringLiteral("MAGNETIC_FIELD"),
        QStringLiteral("NO_SUPPLY"),    QStringLiteral("TEMPERATURE_HIGH"),
    };
    std::vector<model::dev_event> events;
    events.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        model::dev_event event;
        event.modem_id = deviceOf(i);
        event.timestamp = start().addSecs(-static_cast<qint64>(i));
        event.event_code = static_cast<int>(i % texts.size());
        event.message_id = text("", 1'700'000'000'000 + i);
        event.message = texts[i % texts.size()];
        event.extended_data = QJsonDocument{QJsonObject{
            {QStringLiteral("source"), QStringLiteral("status word")},
            {QStringLiteral("phase"), static_cast<int>(i % 3)},
        }};
        event.parameter = static_cast<int>(i % 8);
        event.ttl = start().addSecs(lifetimeSecs);
        events.push_back(std::move(event));
    }
    return events;
}

std::vector<model::dl_message> commands(std::size_t count, std::size_t perDevice) {
    std::vector<model::dl_message> commands;
    commands.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
        model::dl_message command;
        command.modem_id = 1 + static_cast<int>(i / perDevice);
        command.timeout = 60;
        command.ttl = start().addSecs(lifetimeSecs);
        command.timestamp = start().addSecs(-static_cast<qint64>(i));
        command.api_key = QStringLiteral("bench");
        command.data = {
            {QStringLiteral("request"), QStringLiteral("read registers")},
            {QStringLiteral("first"), static_cast<int>(i % 100)},
            {QStringLiteral("count"), 8},
            {QStringLiteral("schedule"), QJsonObject{{QStringLiteral("window"), QJsonArray{6, 22}},
                                                     {QStringLiteral("retry"), true}}},
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
            model::dl_queues::element element;
            element.data = {{QStringLiteral("request"), QStringLiteral("read registers")},
                            {QStringLiteral("first"), i},
                            {QStringLiteral("device"), device}};
            element.type = QStringLiteral("read");
            element.db_id =
                QStringLiteral("65f0c0ffee65f0c0ffee%1").arg(i, 4, 16, QLatin1Char('0'));
            element.status = model::dl_queues::status::WAIT;
            queue.elements.insert(QString::number(i), element);
        }
        queues.dl.insert(name, queue);
    }
    queues.status = model::dl_queues::status::WAIT;
    return queues;
}

std::vector<MadeUp> madeUpDocuments() {
    QJsonObject deep{{QStringLiteral("reading"), 21.5}};
    for (std::size_t level = 0; level < 40; ++level) {
        deep = {{QStringLiteral("level"), static_cast<int>(level)}, {QStringLiteral("next"), deep}};
    }
    QJsonObject wide;
    for (std::size_t i = 0; i < 400; ++i) {
        wide.insert(text("quantity_", i),
                    i % 2 == 0 ? static_cast<double>(i) / 8 : static_cast<double>(i));
    }
    QJsonObject texts;
    for (std::size_t i = 0; i < 8; ++i) {
        texts.insert(text("note_", i),
                     QString::fromUtf8("Zähler geprüft, Siegel unversehrt. ").repeated(60));
    }
    QJsonArray profile;
    for (std::size_t i = 0; i < 400; ++i) {
        profile.append(
            QJsonArray{static_cast<int>(1'553'436'000 + 900 * i), static_cast<double>(i % 97) / 4});
    }
    return {
        {QStringLiteral("deeply nested"), QJsonDocument{deep}},
        {QStringLiteral("400 keys"), QJsonDocument{wide}},
        {QStringLiteral("long texts"), QJsonDocument{texts}},
        {QStringLiteral("lists"), QJsonDocument{QJsonObject{{QStringLiteral("profile"), profile}}}},
    };
}

std::vector<model::message> messagesWith(const QJsonDocument& data) {
    auto messages = telegramMessages();
    for (model::message& message : messages) {
        message.data = data;
    }
    return messages;
}

} // namespace bench
