#include "bench/text_path.h"

#include "model/bson/bson_builder.h"

#include <bson/bson.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <memory>
#include <stdexcept>

namespace bench::text_path {

namespace {

QJsonObject parsedText(const bsoncxx::v1::document::view& document) {
    bson_t bson;
    if (!bson_init_static(&bson, document.data(), document.size())) {
        throw std::runtime_error("not a BSON document");
    }
    std::size_t length = 0;
    const std::unique_ptr<char, decltype(&bson_free)> text{
        bson_as_legacy_extended_json(&bson, &length), &bson_free};
    return QJsonDocument::fromJson(QByteArray::fromRawData(text.get(), static_cast<int>(length)))
        .object();
}

QDateTime localSecs(const QJsonValue& secs) {
    return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(secs.toDouble()));
}

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

QJsonValue withDoubles(const QJsonValue& value);

// Every number a double, as the command's writer stores it.
QJsonObject withDoubles(const QJsonObject& object) {
    QJsonObject json;
    for (auto member = object.constBegin(); member != object.constEnd(); ++member) {
        json.insert(member.key(), withDoubles(member.value()));
    }
    return json;
}

QJsonValue withDoubles(const QJsonValue& value) {
    switch (value.type()) {
    case QJsonValue::Double:
        return wrapped(QStringLiteral("$numberDouble"), QString::number(value.toDouble(), 'g', 17));
    case QJsonValue::Object:
        return withDoubles(value.toObject());
    case QJsonValue::Array: {
        QJsonArray array;
        for (const QJsonValue& element : value.toArray()) {
            array.append(withDoubles(element));
        }
        return array;
    }
    default:
        return value;
    }
}

bsoncxx::v1::document::value parsed(const QJsonObject& json) {
    const QByteArray text = QJsonDocument{json}.toJson(QJsonDocument::Compact);
    bson_utils::bson_builder document;
    document.readJson({text.constData(), static_cast<std::size_t>(text.size())});
    return document.take();
}

} // namespace

model::message readUL(const bsoncxx::v1::document::view& document) {
    const QJsonObject json = parsedText(document);
    const auto value = [&](const char* key) { return json.value(QLatin1String(key)); };
    model::message message;
    message.unique_id = value("_id").toString().toULongLong(nullptr, 16);
    message.modem_id = value("modem_id").toInt();
    message.station_id = value("station_id").toInt();
    message.phy = value("phy").toString();
    message.rssi = value("rssi").toInt();
    message.snr = value("snr").toInt();
    message.ttl = QDateTime::fromMSecsSinceEpoch(
        static_cast<qint64>(value("ttl").toObject().value(QLatin1String("$date")).toDouble()));
    message.timestamp = localSecs(value("timestamp"));
    message.time_detected = localSecs(value("time_detected"));
    message.bs_timezone_offset = value("bs_timezone_offset").toInt();
    message.tag = value("tag").toString();
    message.hw_type = value("hw_type").toString();
    message.protocol = value("protocol").toString();
    message.extended_data = QJsonDocument{value("extended_data").toObject()};
    message.data = QJsonDocument{value("data").toObject()};
    message.payload = QByteArray::fromHex(value("payload").toString().toLatin1());
    message.parse_status = value("parse_status").toString();
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
