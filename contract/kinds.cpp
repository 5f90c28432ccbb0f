#include "contract/kinds.h"

#include <utility>

namespace contract {

namespace {

constexpr qint64 firstSecs = 1'700'000'000;
constexpr int msecsPerSec = 1000;

/// With milliseconds, which a ttl keeps.
QDateTime tomorrow() {
    constexpr qint64 dayMsecs = 86'400'123;
    const qint64 now = QDateTime::currentSecsSinceEpoch() * msecsPerSec;
    return QDateTime::fromMSecsSinceEpoch(now + dayMsecs, Qt::UTC);
}

} // namespace

QDateTime instant(double secs) {
    return QDateTime::fromMSecsSinceEpoch(
        firstSecs * msecsPerSec + static_cast<qint64>(secs * msecsPerSec), Qt::UTC);
}

Uplinks::Record Uplinks::record(int device, int number, double secs) {
    // Beyond those that a host is likely to give, and another for every device.
    constexpr quint64 mark = 0xc0de'0000'0000'0000;
    constexpr unsigned numberBits = 12;
    return {
        .extra_text = QStringLiteral("the host's own"),
        .extra_value1 = 71,
        .extra_value2 = 72,
        .modem_id = device,
        .station_id = number,
        .ttl = tomorrow(),
        .timestamp = instant(secs),
        .time_detected = instant(secs - 5),
        .bs_timezone_offset = 180,
        .phy = QStringLiteral("868 MHz"),
        .snr = -7,
        .rssi = -112,
        .tag = QStringLiteral("hourly"),
        .unique_id =
            mark | static_cast<quint64>(device) << numberBits | static_cast<quint64>(number),
        .data = QJsonDocument(QJsonObject{{QStringLiteral("total"), 21.5}}),
        .extended_data = QJsonDocument(QJsonObject{{QStringLiteral("line"), number}}),
        .parse_status = QStringLiteral("ok"),
        .hw_type = QStringLiteral("meter"),
        .protocol = QStringLiteral("wM-Bus"),
        .payload = QByteArrayLiteral("\x01\xab"),
    };
}

std::list<Uplinks::Record> Uplinks::save(Trial& trial, std::list<Record> records) {
    for (const auto& record : records) {
        trial.uplinks().SaveMessage(record);
    }
    return records;
}

Answer<Uplinks::Record> Uplinks::find(Trial& trial, const Filter& filter) {
    return trial.uplinks().GetMessages(filter);
}

void Uplinks::removeAll(Trial& trial) {
    trial.uplinks().DeleteMessages(everything(trial));
}

void Uplinks::setTexts(Record& record, const QString& text) {
    for (QString* member :
         {&record.phy, &record.tag, &record.parse_status, &record.hw_type, &record.protocol}) {
        *member = text;
    }
}

void Uplinks::setJson(Record& record, const QJsonObject& object) {
    record.data = record.extended_data = QJsonDocument(object);
}

Downlinks::Record Downlinks::record(int device, int number, double secs) {
    return {
        .f_ack = 1,
        .modem_id = device,
        .timeout = number,
        .ttl = tomorrow(),
        .timestamp = instant(secs),
        .db_id = QStringLiteral("not stored"),
        .api_key = QStringLiteral("kelvro-contract"),
        .status = model::dl_message::dl_status::PENDING,
        .data = QJsonObject{{QStringLiteral("valve"), QStringLiteral("open")}},
        .payload = QByteArrayLiteral("\xde\xad"),
        .extra_text = QStringLiteral("the host's own"),
    };
}

std::list<Downlinks::Record> Downlinks::save(Trial& trial, std::list<Record> records) {
    for (auto& record : records) {
        trial.downlinks().SaveMessage(record);
    }
    return records;
}

Answer<Downlinks::Record> Downlinks::find(Trial& trial, const Filter& filter) {
    return trial.downlinks().GetCommands(filter);
}

void Downlinks::removeAll(Trial& trial) {
    const auto all = everything(trial);
    trial.downlinks().DeleteMessages(all.modem_ids, all.begin, all.end);
}

void Downlinks::setTexts(Record& record, const QString& text) {
    record.api_key = text;
}

void Downlinks::setJson(Record& record, const QJsonObject& object) {
    record.data = object;
}

Values::Record Values::record(int device, int number, double secs) {
    return {
        .modem_id = device,
        .timestamp = instant(secs),
        .obis_code = QStringLiteral("1-0:1.8.0"),
        .tag = QStringLiteral("energy"),
        .extended_data = QJsonDocument(QJsonObject{{QStringLiteral("tariff"), 1}}),
        .value = number + 0.5,
        .message_id = QString::number(number),
        .ttl = tomorrow(),
    };
}

std::list<Values::Record> Values::save(Trial& trial, std::list<Record> records) {
    trial.eav().SaveValues(records);
    return records;
}

Answer<Values::Record> Values::find(Trial& trial, const Filter& filter) {
    return trial.eav().GetValues(filter);
}

void Values::removeAll(Trial& trial) {
    trial.eav().DeleteValues(everything(trial));
}

void Values::setTexts(Record& record, const QString& text) {
    record.obis_code = record.tag = record.message_id = text;
    record.value = text;
}

void Values::setJson(Record& record, const QJsonObject& object) {
    record.extended_data = QJsonDocument(object);
}

Events::Record Events::record(int device, int number, double secs) {
    return {
        .modem_id = device,
        .timestamp = instant(secs),
        .event_code = 404,
        .message_id = QStringLiteral("c0de"),
        .message = QStringLiteral("cover opened"),
        .extended_data =
            QJsonDocument(QJsonObject{{QStringLiteral("side"), QStringLiteral("left")}}),
        .parameter = number,
        .ttl = tomorrow(),
    };
}

std::list<Events::Record> Events::save(Trial& trial, std::list<Record> records) {
    trial.eav().SaveEvents(records);
    return records;
}

Answer<Events::Record> Events::find(Trial& trial, const Filter& filter) {
    return trial.eav().GetEvents(filter);
}

void Events::removeAll(Trial& trial) {
    trial.eav().DeleteEvents(everything(trial));
}

void Events::setTexts(Record& record, const QString& text) {
    record.message = record.message_id = text;
}

void Events::setJson(Record& record, const QJsonObject& object) {
    record.extended_data = QJsonDocument(object);
}

} // namespace contract
