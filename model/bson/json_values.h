#pragma once

#include <bsoncxx/v1/array/view.hpp>
#include <bsoncxx/v1/document/view.hpp>
#include <bsoncxx/v1/element/view.hpp>

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>

/// BSON read value by value, which defines what nested documents of uplinks are in JSON: doubles,
/// strings, booleans, int32, int64, documents and arrays keep their meaning, anything else becomes
/// null. Of a repeated key the last value stays.
namespace bson_utils {

/// Deliberate: keys are read as Latin-1, although they are written as UTF-8; hosts rely on it.
QJsonObject insertedObject(const bsoncxx::v1::document::view& document);

/// The same: ordinary documents by way of text (json_text.h), all others as above.
QJsonObject fromBsonJobj(const bsoncxx::v1::document::view& document);

QJsonArray fromBsonArr(const bsoncxx::v1::array::view& array);

/// A value that is neither a document nor an array (both give null here).
QJsonValue fromBsonOther(const bsoncxx::v1::element::view& element);

} // namespace bson_utils
