#pragma once

#include "model/bson/record_reader.h"
#include "model/bson/typed_fields.h"
#include "model/documents/index_layout.h"
#include "model/message.h"

/// The collection of uplink messages. Frozen: stores in the field hold these documents.
///
///     key                  BSON type  from model::message
///     "_id"                string     unique_id, lowercase hexadecimal, no padding
///     "modem_id"           int32
///     "station_id"         int32
///     "phy"                string
///     "rssi"               int32
///     "snr"                int32
///     "ttl"                date       UTC milliseconds
///     "timestamp"          int64      seconds since the epoch, an unsigned 32-bit count
///     "time_detected"      int64      seconds since the epoch, an unsigned 32-bit count
///     "bs_timezone_offset" int32
///     "tag"                string
///     "hw_type"            string
///     "protocol"           string
///     "extended_data"      document   numbers typed by libbson's JSON reader
///     "data"               document   numbers typed by libbson's JSON reader
///     "payload"            string     lowercase hexadecimal
///     "parse_status"       string
///
/// Every key is always written, in this order.
namespace layout::ul_messages {

inline constexpr std::string_view collection = "ul_messages";

inline constexpr std::string_view id = "_id";
inline constexpr std::string_view modem_id = "modem_id";
inline constexpr std::string_view station_id = "station_id";
inline constexpr std::string_view phy = "phy";
inline constexpr std::string_view rssi = "rssi";
inline constexpr std::string_view snr = "snr";
inline constexpr std::string_view ttl = "ttl";
inline constexpr std::string_view timestamp = "timestamp";
inline constexpr std::string_view time_detected = "time_detected";
inline constexpr std::string_view bs_timezone_offset = "bs_timezone_offset";
inline constexpr std::string_view tag = "tag";
inline constexpr std::string_view hw_type = "hw_type";
inline constexpr std::string_view protocol = "protocol";
inline constexpr std::string_view extended_data = "extended_data";
inline constexpr std::string_view data = "data";
inline constexpr std::string_view payload = "payload";
inline constexpr std::string_view parse_status = "parse_status";

inline constexpr std::array<index, 6> indexes{{
    {.keys = {{{timestamp, index_order::descending}}}},
    {.keys = {{{modem_id}, {timestamp, index_order::descending}}}},
    {.keys = {{{modem_id}, {time_detected, index_order::descending}}}},
    {.keys = {{{modem_id}, {tag}, {timestamp, index_order::descending}}}},
    {.keys = {{{modem_id, index_order::hashed}}}},
    {.keys = {{{ttl}}}, .expires = true},
}};

} // namespace layout::ul_messages

namespace bson_utils {

/// A member other than "ttl" must be there with the type above.
template <>
struct plain_way<model::message> {
    using fields = typed_fields;
};

/// For ordinary_fields and typed_fields.
template <typename Fields>
void read(Fields& fields, model::message& message);

} // namespace bson_utils
