#include "model/bson/json_values.h"

#include "model/bson/json_text.h"

#include <bsoncxx/v1/types/id.hpp>
#include <bsoncxx/v1/types/view.hpp>

#include <QString>

#include <utility>

namespace bson_utils {

namespace {

using bsoncxx::v1::types::id;

QString textOf(bsoncxx::v1::stdx::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
}

QJsonValue jsonValueOf(const bsoncxx::v1::element::view& element) {
    switch (element.type_id()) {
    case id::k_document:
        return insertedObject(element.get_document().value);
    case id::k_array:
        return fromBsonArr(element.get_array().value);
    default:
        return fromBsonOther(element);
    }
}

} // namespace

QJsonObject insertedObject(const bsoncxx::v1::document::view& document) {
    QJsonObject json;
    for (const bsoncxx::v1::element::view& element : document) {
        const auto key = element.key();
        json.insert(QString::fromLatin1(key.data(), static_cast<int>(key.size())),
                    jsonValueOf(element));
    }
    return json;
}

QJsonObject fromBsonJobj(const bsoncxx::v1::document::view& document) {
    auto ordinary = ordinaryObject(document);
    return ordinary ? *std::move(ordinary) : insertedObject(document);
}

QJsonArray fromBsonArr(const bsoncxx::v1::array::view& array) {
    QJsonArray json;
    for (const bsoncxx::v1::element::view& element : array) {
        json.append(jsonValueOf(element));
    }
    return json;
}

QJsonValue fromBsonOther(const bsoncxx::v1::element::view& element) {
    switch (element.type_id()) {
    case id::k_double:
        return QJsonValue{element.get_double().value};
    case id::k_string:
        return QJsonValue{textOf(element.get_string().value)};
    case id::k_bool:
        return QJsonValue{element.get_bool().value};
    case id::k_int32:
        return QJsonValue{element.get_int32().value};
    case id::k_int64:
        return QJsonValue{static_cast<qint64>(element.get_int64().value)};
    default:
        return QJsonValue{QJsonValue::Null};
    }
}

} // namespace bson_utils
