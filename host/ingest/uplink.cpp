#include "host/ingest/uplink.h"

#include "host/ingest/field_code.h"
#include "host/records/event_builder.h"
#include "host/records/message_builder.h"

#include <QCryptographicHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QtEndian>

namespace host {

namespace {

std::list<model::dev_value> buildValues(const model::message& message,
                                        const QJsonObject& readings) {
    std::list<model::dev_value> values;
    for (const auto& field : codedFields(message.tag, readings)) {
        model::dev_value value;
        value.modem_id = message.modem_id;
        value.timestamp = message.timestamp;
        value.obis_code = field.obisCode;
        value.tag = message.tag;
        value.extended_data = QJsonDocument(QJsonObject{{QStringLiteral("field"), field.field},
                                                        {QStringLiteral("unit"), field.unit}});
        value.value = field.number;
        value.message_id = messageId(message.unique_id);
        value.ttl = message.ttl;
        values.push_back(value);
    }
    return values;
}

std::list<model::dev_event> buildEvents(const model::message& message,
                                        const QJsonObject& readings) {
    std::list<model::dev_event> events;
    for (const auto& status : statusWords(readings)) {
        model::dev_event event;
        event.modem_id = message.modem_id;
        event.timestamp = message.timestamp;
        event.event_code = static_cast<int>(status.code);
        event.message_id = messageId(message.unique_id);
        event.message = status.word;
        event.extended_data = QJsonDocument(QJsonObject{{QStringLiteral("member"), status.member}});
        event.parameter = status.place;
        event.ttl = message.ttl;
        events.push_back(event);
    }
    return events;
}

} // namespace

quint64 uniqueNumber(const Telegram& telegram) {
    const QJsonArray content{
        telegram.deviceNumber,
        telegram.timeSecs ? QJsonValue(*telegram.timeSecs) : QJsonValue(),
        telegram.payload.isEmpty() ? QJsonValue(telegram.decoded)
                                   : QJsonValue(QString::fromLatin1(telegram.payload.toHex())),
    };
    const auto hash = QCryptographicHash::hash(
        QJsonDocument(content).toJson(QJsonDocument::Compact), QCryptographicHash::Sha256);
    return qFromBigEndian<quint64>(hash.constData());
}

QString messageId(quint64 uniqueNumber) {
    return QString::number(uniqueNumber, 16);
}

Uplink buildUplink(const Telegram& telegram, const QDateTime& now, const QDateTime& expiry) {
    Uplink uplink;
    uplink.timeAssigned = !telegram.timeSecs;
    auto& message = uplink.message;
    message = messageOf(telegram);
    message.unique_id = uniqueNumber(telegram);
    message.timestamp =
        QDateTime::fromSecsSinceEpoch(telegram.timeSecs.value_or(now.toSecsSinceEpoch()), Qt::UTC);
    message.time_detected = message.timestamp;
    message.ttl = expiry;
    message.rssi = telegram.reception.value(QLatin1String("rssi_dbm")).toInt();
    message.extended_data = QJsonDocument(telegram.reception);
    uplink.values = buildValues(message, telegram.decoded);
    uplink.events = buildEvents(message, telegram.decoded);
    return uplink;
}

void setTime(Uplink& uplink, const QDateTime& time) {
    uplink.message.timestamp = time;
    uplink.message.time_detected = time;
    for (auto& value : uplink.values) {
        value.timestamp = time;
    }
    for (auto& event : uplink.events) {
        event.timestamp = time;
    }
}

} // namespace host
