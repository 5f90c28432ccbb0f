#pragma once

#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/bson/local_times.h"

#include <bsoncxx/v1/document/view.hpp>

/// The readers of stored downlink commands, values and events.
///
/// They never fail on a document's content: a missing or mistyped member gives the default that
/// QJsonValue's accessors give (0, an empty text or object, the epoch), as reading the document's
/// legacy extended JSON text with Qt does; see legacy_json.h. A document whose text would not parse
/// gives a record of defaults. `timestamp` comes back in UTC with whole seconds (the epoch if it is
/// beyond a 32-bit int), `ttl` in local time with milliseconds. Other members are ignored.
///
/// Pure functions. bson_error is thrown for bytes that are no BSON or hold invalid UTF-8.
namespace bson_utils {

/// One document of "dl_messages"; `db_id` is its ObjectId in hexadecimal.
model::dl_message fromBsonDL(const bsoncxx::v1::document::view& document);

/// One document of "eav_values"; a numeric value comes back as a double.
model::dev_value fromBsonValue(const bsoncxx::v1::document::view& document);

/// One document of "eav_events".
model::dev_event fromBsonEvent(const bsoncxx::v1::document::view& document);

/// The same for the documents of one query, which share what is known of local times.
class legacy_reader {
public:
    model::dl_message readDL(const bsoncxx::v1::document::view& document);
    model::dev_value readValue(const bsoncxx::v1::document::view& document);
    model::dev_event readEvent(const bsoncxx::v1::document::view& document);

private:
    local_times m_times;
};

} // namespace bson_utils
