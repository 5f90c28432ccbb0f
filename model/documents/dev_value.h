#pragma once

#include "model/bson/record_reader.h"
#include "model/dev_value.h"
#include "model/documents/index_layout.h"

/// The collection of meter readings. Frozen: stores in the field hold these documents.
///
///     key             BSON type  from model::dev_value
///     "modem_id"      int32
///     "message_id"    string
///     "timestamp"     int64      seconds since the epoch, an unsigned 32-bit count
///     "tag"           string
///     "obis_code"     string
///     "val_type"      int64      QVariant::type() of the value
///     "extended_data" document   numbers typed by libbson's JSON reader
///     "ttl"           date       UTC milliseconds
///     "value"         boolean, int32, double or string; "unknown type" or "invalid type" for
///                     what none of them can hold
///
/// Every key is always written, in this order, after an "_id" given by the MongoDB driver.
namespace layout::eav_values {

inline constexpr std::string_view collection = "eav_values";

inline constexpr std::string_view modem_id = "modem_id";
inline constexpr std::string_view message_id = "message_id";
inline constexpr std::string_view timestamp = "timestamp";
inline constexpr std::string_view tag = "tag";
inline constexpr std::string_view obis_code = "obis_code";
inline constexpr std::string_view val_type = "val_type";
inline constexpr std::string_view extended_data = "extended_data";
inline constexpr std::string_view ttl = "ttl";
inline constexpr std::string_view value = "value";

inline constexpr std::array<index, 6> indexes{{
    {.keys = {{{modem_id}, {tag}, {obis_code}, {timestamp, index_order::descending}}}},
    {.keys = {{{modem_id}, {tag}, {timestamp, index_order::descending}}}},
    {.keys = {{{modem_id}, {obis_code}, {timestamp, index_order::descending}}}},
    {.keys = {{{modem_id, index_order::hashed}}}},
    {.keys = {{{modem_id}, {timestamp, index_order::descending}}}},
    {.keys = {{{ttl}}}, .expires = true},
}};

} // namespace layout::eav_values

namespace bson_utils {

/// For ordinary_fields and legacy_fields.
template <typename Fields>
void read(Fields& fields, model::dev_value& value);

} // namespace bson_utils
