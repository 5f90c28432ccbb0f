#pragma once

#include "model/bson/record_reader.h"
#include "model/dev_event.h"
#include "model/documents/index_layout.h"

/// The collection of device events. Frozen: stores in the field hold these documents.
///
///     key             BSON type  from model::dev_event
///     "modem_id"      int32
///     "timestamp"     int64      seconds since the epoch, an unsigned 32-bit count
///     "message_id"    string
///     "event_code"    int32
///     "message"       string
///     "parameter"     int32
///     "extended_data" document   numbers typed by libbson's JSON reader
///     "ttl"           date       UTC milliseconds
///
/// Every key is always written, in this order, after an "_id" given by the MongoDB driver.
namespace layout::eav_events {

inline constexpr std::string_view collection = "eav_events";

inline constexpr std::string_view modem_id = "modem_id";
inline constexpr std::string_view timestamp = "timestamp";
inline constexpr std::string_view message_id = "message_id";
inline constexpr std::string_view event_code = "event_code";
inline constexpr std::string_view message = "message";
inline constexpr std::string_view parameter = "parameter";
inline constexpr std::string_view extended_data = "extended_data";
inline constexpr std::string_view ttl = "ttl";

inline constexpr std::array<index, 3> indexes{{
    {.keys = {{{modem_id}, {timestamp, index_order::descending}}}},
    {.keys = {{{modem_id, index_order::hashed}}}},
    {.keys = {{{ttl}}}, .expires = true},
}};

} // namespace layout::eav_events

namespace bson_utils {

/// For ordinary_fields and legacy_fields.
template <typename Fields>
void read(Fields& fields, model::dev_event& event);

} // namespace bson_utils
