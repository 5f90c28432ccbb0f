#pragma once

#include "model/bson/record_reader.h"
#include "model/dl_message.h"
#include "model/documents/index_layout.h"

/// The collection of downlink commands. Frozen: stores in the field hold these documents.
///
///     key         BSON type  from model::dl_message
///     "_id"       ObjectId   given by the MongoDB driver; read back as db_id
///     "modem_id"  int32
///     "api_key"   string
///     "data"      document   every number a double, nulls left out
///     "status"    int32      0 pending, 1 waiting for data, 2 executed, 3 timed out
///     "timeout"   int32
///     "f_ack"     int32
///     "payload"   string     lowercase hexadecimal
///     "ttl"       date       UTC milliseconds
///     "timestamp" int64      seconds since the epoch, an unsigned 32-bit count
///
/// Every key is always written, in this order.
namespace layout::dl_messages {

inline constexpr std::string_view collection = "dl_messages";

inline constexpr std::string_view id = server_id;
inline constexpr std::string_view modem_id = "modem_id";
inline constexpr std::string_view api_key = "api_key";
inline constexpr std::string_view data = "data";
inline constexpr std::string_view status = "status";
inline constexpr std::string_view timeout = "timeout";
inline constexpr std::string_view f_ack = "f_ack";
inline constexpr std::string_view payload = "payload";
inline constexpr std::string_view ttl = "ttl";
inline constexpr std::string_view timestamp = "timestamp";

inline constexpr std::array<index, 5> indexes{{
    {.keys = {{{modem_id}, {timestamp, index_order::descending}}}},
    {.keys = {{{modem_id}, {status}}}},
    {.keys = {{{modem_id}, {timestamp, index_order::descending}, {status}}}},
    {.keys = {{{modem_id, index_order::hashed}}}},
    {.keys = {{{ttl}}}, .expires = true},
}};

} // namespace layout::dl_messages

namespace bson_utils {

/// For ordinary_fields and legacy_fields.
template <typename Fields>
void read(Fields& fields, model::dl_message& message);

} // namespace bson_utils
