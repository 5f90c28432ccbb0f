#include "tests/model/legacy_text_readers.h"

#include "model/bson/bson_error.h"

#include <bson/bson.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <memory>

namespace legacy_text {

namespace {

QJsonObject parsedText(const bsoncxx::v1::document::view& document) {
    bson_t bson;
    if (!bson_init_static(&bson, document.data(), document.size())) {
        throw bson_utils::bson_error("not a BSON document");
    }
    std::size_t length = 0;
    const std::unique_ptr<char, decltype(&bson_free)> text{
        bson_as_legacy_extended_json(&bson, &length), &bson_free};
    if (text == nullptr) {
        throw bson_utils::bson_error("libbson cannot render the document");
    }
    return QJsonDocument::fromJson(QByteArray::fromRawData(text.get(), static_cast<int>(length)))
        .object();
}

QDateTime utcSecs(const QJsonValue& secs) {
    return QDateTime::fromSecsSinceEpoch(secs.toInt(0), Qt::UTC);
}

QDateTime localMsecs(const QJsonValue& date) {
    const double msecs = date.toObject().value(QStringLiteral("$date")).toDouble(0);
    // 2^63 is the one double that a stored 64-bit date can become and that does not fit back.
    return QDateTime::fromMSecsSinceEpoch(msecs < 9223372036854775808.0 ? static_cast<qint64>(msecs)
                                                                        : INT64_MAX);
}

QVariant variant(const QJsonValue& value);

QVariantList variants(const QJsonArray& array) {
    QVariantList list;
    for (const QJsonValue& element : array) {
        list << variant(element);
    }
    return list;
}

QVariantMap variants(const QJsonObject& object) {
    QVariantMap map;
    for (const QString& key : object.keys()) {
        map[key] = variant(object[key]);
    }
    return map;
}

// QJsonValue::toVariant() as it was before Qt told whole numbers apart.
QVariant variant(const QJsonValue& value) {
    if (value.isDouble()) {
        return QVariant{value.toDouble()};
    }
    if (value.isArray()) {
        return QVariant{variants(value.toArray())};
    }
    if (value.isObject()) {
        return QVariant{variants(value.toObject())};
    }
    return value.toVariant();
}

} // namespace

model::dl_message readDL(const bsoncxx::v1::document::view& document) {
    const QJsonObject json = parsedText(document);
    model::dl_message message;
    message.db_id = json[QStringLiteral("_id")].toObject()[QStringLiteral("$oid")].toString();
    message.modem_id = json[QStringLiteral("modem_id")].toInt(0);
    message.timeout = json[QStringLiteral("timeout")].toInt(0);
    message.status =
        static_cast<model::dl_message::dl_status>(json[QStringLiteral("status")].toInt(0));
    message.timestamp = utcSecs(json[QStringLiteral("timestamp")]);
    message.data = json[QStringLiteral("data")].toObject();
    message.api_key = json[QStringLiteral("api_key")].toString();
    message.payload = QByteArray::fromHex(json[QStringLiteral("payload")].toString().toLatin1());
    message.f_ack = json[QStringLiteral("f_ack")].toInt(0);
    message.ttl = localMsecs(json[QStringLiteral("ttl")]);
    return message;
}

model::dev_value readValue(const bsoncxx::v1::document::view& document) {
    const QJsonObject json = parsedText(document);
    model::dev_value value;
    value.extended_data = QJsonDocument{json[QStringLiteral("extended_data")].toObject()};
    value.message_id = json[QStringLiteral("message_id")].toString();
    value.modem_id = json[QStringLiteral("modem_id")].toInt(0);
    value.obis_code = json[QStringLiteral("obis_code")].toString();
    value.tag = json[QStringLiteral("tag")].toString();
    value.timestamp = utcSecs(json[QStringLiteral("timestamp")]);
    value.value = variant(json[QStringLiteral("value")]);
    value.ttl = localMsecs(json[QStringLiteral("ttl")]);
    return value;
}

model::dev_event readEvent(const bsoncxx::v1::document::view& document) {
    const QJsonObject json = parsedText(document);
    model::dev_event event;
    event.event_code = json[QStringLiteral("event_code")].toInt(0);
    event.extended_data = QJsonDocument{json[QStringLiteral("extended_data")].toObject()};
    event.message = json[QStringLiteral("message")].toString();
    event.message_id = json[QStringLiteral("message_id")].toString();
    event.modem_id = json[QStringLiteral("modem_id")].toInt(0);
    event.parameter = json[QStringLiteral("parameter")].toInt(0);
    event.timestamp = utcSecs(json[QStringLiteral("timestamp")]);
    event.ttl = localMsecs(json[QStringLiteral("ttl")]);
    return event;
}

} // namespace legacy_text
