#include "model/legacy_readers.h"

#include "model/bson_error.h"

#include <bson/bson.h>

#include <QJsonArray>
#include <QJsonObject>

#include <memory>

namespace bson_utils {

namespace {

QJsonObject parsedLegacyText(const bsoncxx::v1::document::view& document) {
    bson_t bson;
    if (!bson_init_static(&bson, document.data(), document.size())) {
        throw bson_error("not a BSON document");
    }
    std::size_t length = 0;
    const std::unique_ptr<char, decltype(&bson_free)> text{
        bson_as_legacy_extended_json(&bson, &length), &bson_free};
    if (text == nullptr) {
        throw bson_error("cannot render a BSON document as JSON");
    }
    return QJsonDocument::fromJson(QByteArray::fromRawData(text.get(), static_cast<int>(length)))
        .object();
}

QDateTime utcSecs(const QJsonValue& secs) {
    return QDateTime::fromSecsSinceEpoch(secs.toInt(), Qt::UTC);
}

QDateTime localMsecs(const QJsonValue& date) {
    const double msecs = date.toObject().value(QStringLiteral("$date")).toDouble();
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(msecs));
}

} // namespace

model::dl_message fromBsonDL(const bsoncxx::v1::document::view& document) {
    const QJsonObject json = parsedLegacyText(document);
    model::dl_message message;
    message.db_id =
        json.value(QStringLiteral("_id")).toObject().value(QStringLiteral("$oid")).toString();
    message.modem_id = json.value(QStringLiteral("modem_id")).toInt();
    message.timeout = json.value(QStringLiteral("timeout")).toInt();
    message.status =
        static_cast<model::dl_message::dl_status>(json.value(QStringLiteral("status")).toInt());
    message.timestamp = utcSecs(json.value(QStringLiteral("timestamp")));
    message.data = json.value(QStringLiteral("data")).toObject();
    message.api_key = json.value(QStringLiteral("api_key")).toString();
    message.payload =
        QByteArray::fromHex(json.value(QStringLiteral("payload")).toString().toLatin1());
    message.f_ack = json.value(QStringLiteral("f_ack")).toInt();
    message.ttl = localMsecs(json.value(QStringLiteral("ttl")));
    return message;
}

} // namespace bson_utils
