#include "model/bson_utils.h"

#include "model/bson/json_document.h"
#include "model/bson/utf8_text.h"

#include <QDebug>

#include <string>
#include <utility>

namespace bson_utils {

namespace {

void appendMembers(bson_builder& document, const QJsonObject& json);
void appendElements(bson_builder& array, const QJsonArray& json);

void appendJsonValue(bson_builder& parent, std::string_view key, const QJsonValue& value) {
    switch (value.type()) {
    case QJsonValue::Bool:
        parent.appendBool(key, value.toBool());
        break;
    case QJsonValue::Double:
        parent.appendDouble(key, value.toDouble());
        break;
    case QJsonValue::String:
        parent.appendString(key, value.toString());
        break;
    case QJsonValue::Array:
        parent.appendArray(key,
                           [&](bson_builder& array) { appendElements(array, value.toArray()); });
        break;
    case QJsonValue::Object:
        parent.appendDocument(
            key, [&](bson_builder& document) { appendMembers(document, value.toObject()); });
        break;
    case QJsonValue::Null:
    case QJsonValue::Undefined:
        break;
    }
}

void appendMembers(bson_builder& document, const QJsonObject& json) {
    for (auto member = json.constBegin(); member != json.constEnd(); ++member) {
        const utf8_text key{member.key()};
        appendJsonValue(document, key.view(), member.value());
    }
}

void appendElements(bson_builder& array, const QJsonArray& json) {
    int index = 0;
    for (const QJsonValue& element : json) {
        if (!element.isNull() && !element.isUndefined()) {
            appendJsonValue(array, std::to_string(index++), element);
        }
    }
}

} // namespace

void bsonAppend(bson_builder& document, std::string_view key, const QVariant& value) {
    switch (value.type()) {
    case QVariant::Invalid:
        document.appendUtf8(key, "invalid type");
        break;
    case QVariant::Bool:
        document.appendBool(key, value.toBool());
        break;
    case QVariant::Int:
    case QVariant::UInt:
    case QVariant::LongLong:
        // Deliberate: there is no int64 value; hosts read 32-bit numbers back.
        document.appendInt32(key, value.toInt());
        break;
    case QVariant::Double:
        document.appendDouble(key, value.toDouble());
        break;
    case QVariant::String:
        document.appendString(key, value.toString());
        break;
    default:
        qDebug() << "toBson() failed to convert qvariant" << value << "with type"
                 << value.typeName();
        document.appendUtf8(key, "unknown type");
        break;
    }
}

bsoncxx::v1::document::value toBson(const QJsonDocument& json) {
    auto ordinary = writeOrdinary(json);
    return ordinary ? *std::move(ordinary) : writeText(json);
}

bsoncxx::v1::document::value toBson(const QJsonObject& json) {
    bson_builder document;
    appendMembers(document, json);
    return document.take();
}

bsoncxx::v1::array::value toBson(const QJsonArray& json) {
    bson_builder array;
    appendElements(array, json);
    return array.takeArray();
}

model::message fromBsonUL(const bsoncxx::v1::document::view& document) {
    local_times times;
    return fromBsonUL(document, times);
}

model::message fromBsonUL(const bsoncxx::v1::document::view& document, local_times& times) {
    return readDocument<model::message>(document, times);
}

} // namespace bson_utils
