#pragma once

#include "model/bson/bson_builder.h"
#include "model/bson/bson_error.h"
#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/bson/local_times.h"
#include "model/message.h"

#include <bsoncxx/v1/array/value.hpp>
#include <bsoncxx/v1/array/view.hpp>
#include <bsoncxx/v1/document/value.hpp>
#include <bsoncxx/v1/document/view.hpp>
#include <bsoncxx/v1/element/view.hpp>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QVariant>

#include <string_view>

/// Conversions between Qt's JSON and variant types, the records, and BSON.
///
/// Pure functions: no connection, no clock, no state. Everything may be called from any thread.
/// What libbson refuses is thrown as bson_error; out of memory passes through.
///
/// The two directions are deliberately not symmetric: what is written as BSON by other means reads
/// back as JSON null wherever JSON has no such type (dates and ObjectIds among them).
namespace bson_utils {

/// Appends one value. Bool, Double and String keep their type; Int, UInt and LongLong become an
/// int32, narrowed if need be; an invalid variant becomes the text "invalid type". Any other type
/// is logged at debug level and becomes the text "unknown type".
void bsonAppend(bson_builder& document, std::string_view key, const QVariant& value);

/// By way of JSON text and libbson's reader, so whole numbers become int32 or int64, nulls are kept
/// and the wrapper objects {"$date": …} and {"$oid": …} become dates and ObjectIds. An empty
/// document gives an empty one. Throws bson_error when libbson rejects the text.
bsoncxx::v1::document::value toBson(const QJsonDocument& json);

/// Member by member: every number becomes a double, nulls are left out.
bsoncxx::v1::document::value toBson(const QJsonObject& json);

/// Element by element, as for an object: a null is left out and later elements move down.
bsoncxx::v1::array::value toBson(const QJsonArray& json);

/// Doubles, strings, booleans, int32, int64, documents and arrays; anything else becomes null. Of a
/// repeated key the last value stays. Keys are read as Latin-1.
QJsonObject fromBsonJobj(const bsoncxx::v1::document::view& document);
QJsonArray fromBsonArr(const bsoncxx::v1::array::view& array);

/// One value that is neither a document nor an array (both give null here).
QJsonValue fromBsonOther(const bsoncxx::v1::element::view& element);

/// The stored documents; their layouts stand in model/documents/.
bsoncxx::v1::document::value toBson(const model::message& message);
bsoncxx::v1::document::value toBson(const model::dl_message& message);
bsoncxx::v1::document::value toBson(const model::dev_value& value);
bsoncxx::v1::document::value toBson(const model::dev_event& event);

/// Reads a stored uplink message. `timestamp` and `time_detected` come back in local time with
/// whole seconds, `ttl` in local time with milliseconds (null if the document has none). Every
/// other member must be there with the type that toBson writes, or bsoncxx::v1::exception is
/// thrown. An "_id" that is not hexadecimal gives unique_id 0.
model::message fromBsonUL(const bsoncxx::v1::document::view& document);

/// As above, for the documents of one query, which share `times`.
model::message fromBsonUL(const bsoncxx::v1::document::view& document, local_times& times);

} // namespace bson_utils
