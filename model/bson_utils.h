#pragma once

#include "model/bson/bson_builder.h"
#include "model/bson/json_document.h"
#include "model/bson/json_values.h"
#include "model/bson/record_reader.h"
#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "model/documents/dl_message.h"
#include "model/documents/ul_message.h"

#include <bsoncxx/v1/document/value.hpp>
#include <bsoncxx/v1/document/view.hpp>

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

/// The stored documents; their layouts stand in model/documents/.
bsoncxx::v1::document::value toBson(const model::message& message);
bsoncxx::v1::document::value toBson(const model::dl_message& message);
bsoncxx::v1::document::value toBson(const model::dev_value& value);
bsoncxx::v1::document::value toBson(const model::dev_event& event);

/// Reads a stored uplink message. `timestamp` and `time_detected` come back in local time with
/// whole seconds, `ttl` in local time with milliseconds (null if the document has none). Every
/// other member must be there with the type that toBson writes, or bsoncxx::v1::exception is
/// thrown. An "_id" that is not hexadecimal gives unique_id 0. As readDocument<model::message>, by
/// which a query reads its documents, and those of the other records.
model::message fromBsonUL(const bsoncxx::v1::document::view& document);

} // namespace bson_utils
