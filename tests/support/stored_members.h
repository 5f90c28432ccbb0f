#pragma once

#include "model/bson_utils.h"
#include "model/documents/device_object.h"
#include "tests/support/random_bson.h"

#include <vector>

namespace test_support {

/// What the driver writes: the members of a record's documents, in their order.
template <typename Record>
inline const std::vector<random_bson::member> storedMembers;

template <>
inline const std::vector<random_bson::member> storedMembers<model::message>{
    {"_id", random_bson::member::hex},
    {"modem_id", random_bson::member::int32},
    {"station_id", random_bson::member::int32},
    {"phy", random_bson::member::text},
    {"rssi", random_bson::member::int32},
    {"snr", random_bson::member::int32},
    {"ttl", random_bson::member::date},
    {"timestamp", random_bson::member::int64},
    {"time_detected", random_bson::member::int64},
    {"bs_timezone_offset", random_bson::member::int32},
    {"tag", random_bson::member::text},
    {"hw_type", random_bson::member::text},
    {"protocol", random_bson::member::text},
    {"extended_data", random_bson::member::object},
    {"data", random_bson::member::object},
    {"payload", random_bson::member::hex},
    {"parse_status", random_bson::member::text}};

template <>
inline const std::vector<random_bson::member> storedMembers<model::dl_message>{
    {"_id", random_bson::member::oid},      {"modem_id", random_bson::member::int32},
    {"api_key", random_bson::member::text}, {"data", random_bson::member::object},
    {"status", random_bson::member::int32}, {"timeout", random_bson::member::int32},
    {"f_ack", random_bson::member::int32},  {"payload", random_bson::member::hex},
    {"ttl", random_bson::member::date},     {"timestamp", random_bson::member::int64}};

template <>
inline const std::vector<random_bson::member> storedMembers<model::dev_value>{
    {"_id", random_bson::member::oid},         {"modem_id", random_bson::member::int32},
    {"message_id", random_bson::member::text}, {"timestamp", random_bson::member::int64},
    {"tag", random_bson::member::text},        {"obis_code", random_bson::member::text},
    {"val_type", random_bson::member::int64},  {"extended_data", random_bson::member::object},
    {"ttl", random_bson::member::date},        {"value", random_bson::member::any}};

template <>
inline const std::vector<random_bson::member> storedMembers<model::dev_event>{
    {"_id", random_bson::member::oid},          {"modem_id", random_bson::member::int32},
    {"timestamp", random_bson::member::int64},  {"message_id", random_bson::member::text},
    {"event_code", random_bson::member::int32}, {"message", random_bson::member::text},
    {"parameter", random_bson::member::int32},  {"extended_data", random_bson::member::object},
    {"ttl", random_bson::member::date}};

template <>
inline const std::vector<random_bson::member> storedMembers<bson_utils::device_object>{
    {"_id", random_bson::member::int32}, {"state", random_bson::member::object}};

} // namespace test_support
