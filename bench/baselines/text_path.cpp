#include "bench/baselines/text_path.h"

#include "model/bson/json_document.h"
#include "model/bson/legacy_fields.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace bench::text_path {

namespace {

QJsonObject wrapped(const QString& wrapper, const QJsonValue& value) {
    return {{wrapper, value}};
}

QJsonObject int64(qint64 number) {
    return wrapped(QStringLiteral("$numberLong"), QString::number(number));
}

QJsonObject secs(const QDateTime& time) {
    return int64(time.toSecsSinceEpoch());
}

QJsonObject date(const QDateTime& time) {
    return wrapped(QStringLiteral("$date"), int64(time.toMSecsSinceEpoch()));
}

QString hex(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toHex());
}

/// Every number a double, as the command's writer stores it.
QJsonValue withDoubles(const QJsonValue& value) {
    const auto convertEach = [](auto container) {
        for (auto member = container.begin(); member != container.end(); ++member) {
            *member = withDoubles(*member);
        }
        return container;
    };
    switch (value.type()) {
    case QJsonValue::Double:
        return wrapped(QStringLiteral("$numberDouble"), QString::number(value.toDouble(), 'g', 17));
    case QJsonValue::Object:
        return convertEach(value.toObject());
    case QJsonValue::Array:
        return convertEach(value.toArray());
    default:
        return value;
    }
}

bsoncxx::v1::document::value parsed(const QJsonObject& json) {
    return bson_utils::writeText(QJsonDocument{json});
}

} // namespace

template <>
model::message read(const bsoncxx::v1::document::view& document) {
    const bson_utils::legacy_fields fields{document};
    const auto localSecs = [&](const char* key) {
        return QDateTime::fromSecsSinceEpoch(fields.number(key));
    };
    model::message message;
    message.unique_id = fields.text("_id").toULongLong(nullptr, 16);
    message.modem_id = fields.number("modem_id");
    message.station_id = fields.number("station_id");
    message.phy = fields.text("phy");
    message.rssi = fields.number("rssi");
    message.snr = fields.number("snr");
    message.ttl = fields.localTime("ttl");
    message.timestamp = localSecs("timestamp");
    message.time_detected = localSecs("time_detected");
    message.bs_timezone_offset = fields.number("bs_timezone_offset");
    message.tag = fields.text("tag");
    message.hw_type = fields.text("hw_type");
    message.protocol = fields.text("protocol");
    message.extended_data = QJsonDocument{fields.object("extended_data")};
    message.data = QJsonDocument{fields.object("data")};
    message.payload = fields.hexBytes("payload");
    message.parse_status = fields.text("parse_status");
    return message;
}

bsoncxx::v1::document::value write(const model::message& message) {
    return parsed({
        {QStringLiteral("_id"), QString::number(message.unique_id, 16)},
        {QStringLiteral("modem_id"), message.modem_id},
        {QStringLiteral("station_id"), message.station_id},
        {QStringLiteral("phy"), message.phy},
        {QStringLiteral("rssi"), message.rssi},
        {QStringLiteral("snr"), message.snr},
        {QStringLiteral("ttl"), date(message.ttl)},
        {QStringLiteral("timestamp"), secs(message.timestamp)},
        {QStringLiteral("time_detected"), secs(message.time_detected)},
        {QStringLiteral("bs_timezone_offset"), message.bs_timezone_offset},
        {QStringLiteral("tag"), message.tag},
        {QStringLiteral("hw_type"), message.hw_type},
        {QStringLiteral("protocol"), message.protocol},
        {QStringLiteral("extended_data"), message.extended_data.object()},
        {QStringLiteral("data"), message.data.object()},
        {QStringLiteral("payload"), hex(message.payload)},
        {QStringLiteral("parse_status"), message.parse_status},
    });
}

bsoncxx::v1::document::value write(const model::dl_message& message) {
    return parsed({
        {QStringLiteral("modem_id"), message.modem_id},
        {QStringLiteral("api_key"), message.api_key},
        {QStringLiteral("data"), withDoubles(message.data)},
        {QStringLiteral("status"), static_cast<int>(message.status)},
        {QStringLiteral("timeout"), message.timeout},
        {QStringLiteral("f_ack"), message.f_ack},
        {QStringLiteral("payload"), hex(message.payload)},
        {QStringLiteral("ttl"), date(message.ttl)},
        {QStringLiteral("timestamp"), secs(message.timestamp)},
    });
}

bsoncxx::v1::document::value write(const model::dev_value& value) {
    const bool isDouble = value.value.type() == QVariant::Double;
    const auto content = QJsonValue::fromVariant(value.value);
    return parsed({
        {QStringLiteral("modem_id"), value.modem_id},
        {QStringLiteral("message_id"), value.message_id},
        {QStringLiteral("timestamp"), secs(value.timestamp)},
        {QStringLiteral("tag"), value.tag},
        {QStringLiteral("obis_code"), value.obis_code},
        {QStringLiteral("val_type"), int64(value.value.type())},
        {QStringLiteral("extended_data"), value.extended_data.object()},
        {QStringLiteral("ttl"), date(value.ttl)},
        {QStringLiteral("value"), isDouble ? withDoubles(content) : content},
    });
}

bsoncxx::v1::document::value write(const model::dev_event& event) {
    return parsed({
        {QStringLiteral("modem_id"), event.modem_id},
        {QStringLiteral("timestamp"), secs(event.timestamp)},
        {QStringLiteral("message_id"), event.message_id},
        {QStringLiteral("event_code"), event.event_code},
        {QStringLiteral("message"), event.message},
        {QStringLiteral("parameter"), event.parameter},
        {QStringLiteral("extended_data"), event.extended_data.object()},
        {QStringLiteral("ttl"), date(event.ttl)},
    });
}

} // namespace bench::text_path
