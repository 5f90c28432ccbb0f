#pragma once

#include "model/bson/bson_builder.h"
#include "model/bson/json_values.h"
#include "model/bson/record_reader.h"
#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "model/documents/dl_message.h"
#include "model/documents/ul_message.h"

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
/// What libbson refuses is thrown as the library's bsoncxx::v1::exception, with a code of
/// bson_errc; out of memory passes through. Nothing depends on the process's locale or time zone
/// but the date-times in local time.
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
/// document gives an empty one. Throws bsoncxx::v1::exception when libbson rejects the text.
bsoncxx::v1::document::value toBson(const QJsonDocument& json);

/// Member by member: every number becomes a double, nulls are left out.
bsoncxx::v1::document::value toBson(const QJsonObject& json);

/// Element by element, as for an object: a null is left out and later elements move down.
bsoncxx::v1::array::value toBson(const QJsonArray& json);

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

/// As above, for the documents of one query, which share `times`. The other records are read with
/// readDocument<Record>(document, times).
model::message fromBsonUL(const bsoncxx::v1::document::view& document, local_times& times);

} // namespace bson_utils
