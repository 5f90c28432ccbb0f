#pragma once

#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/dl_queues.h"
#include "model/message.h"

#include <string_view>
#include <tuple>
#include <type_traits>

namespace host {

template <class Record, class Member>
struct NamedMember {
    std::string_view name;
    Member Record::* pointer;
};
template <class Record, class Member>
NamedMember(const char*, Member Record::*) -> NamedMember<Record, Member>;

/// Every member of a record, in the order of declaration, as a tuple of NamedMember; the one place
/// that lists them. Empty for what is no record.
template <class Record>
inline constexpr auto membersOf = std::tuple<>{};

template <>
inline constexpr auto membersOf<model::message> = std::tuple{
    NamedMember{"extra_text", &model::message::extra_text},
    NamedMember{"extra_value1", &model::message::extra_value1},
    NamedMember{"extra_value2", &model::message::extra_value2},
    NamedMember{"modem_id", &model::message::modem_id},
    NamedMember{"station_id", &model::message::station_id},
    NamedMember{"ttl", &model::message::ttl},
    NamedMember{"timestamp", &model::message::timestamp},
    NamedMember{"time_detected", &model::message::time_detected},
    NamedMember{"bs_timezone_offset", &model::message::bs_timezone_offset},
    NamedMember{"phy", &model::message::phy},
    NamedMember{"snr", &model::message::snr},
    NamedMember{"rssi", &model::message::rssi},
    NamedMember{"tag", &model::message::tag},
    NamedMember{"unique_id", &model::message::unique_id},
    NamedMember{"data", &model::message::data},
    NamedMember{"extended_data", &model::message::extended_data},
    NamedMember{"parse_status", &model::message::parse_status},
    NamedMember{"hw_type", &model::message::hw_type},
    NamedMember{"protocol", &model::message::protocol},
    NamedMember{"payload", &model::message::payload},
};

template <>
inline constexpr auto membersOf<model::dl_message> = std::tuple{
    NamedMember{"f_ack", &model::dl_message::f_ack},
    NamedMember{"modem_id", &model::dl_message::modem_id},
    NamedMember{"timeout", &model::dl_message::timeout},
    NamedMember{"ttl", &model::dl_message::ttl},
    NamedMember{"timestamp", &model::dl_message::timestamp},
    NamedMember{"db_id", &model::dl_message::db_id},
    NamedMember{"api_key", &model::dl_message::api_key},
    NamedMember{"status", &model::dl_message::status},
    NamedMember{"data", &model::dl_message::data},
    NamedMember{"payload", &model::dl_message::payload},
    NamedMember{"extra_text", &model::dl_message::extra_text},
};

template <>
inline constexpr auto membersOf<model::dl_queues::element> = std::tuple{
    NamedMember{"data", &model::dl_queues::element::data},
    NamedMember{"type", &model::dl_queues::element::type},
    NamedMember{"db_id", &model::dl_queues::element::db_id},
    NamedMember{"status", &model::dl_queues::element::status},
    NamedMember{"repeat", &model::dl_queues::element::repeat},
};

template <>
inline constexpr auto membersOf<model::dl_queues::queue> = std::tuple{
    NamedMember{"elements", &model::dl_queues::queue::elements},
    NamedMember{"repeat", &model::dl_queues::queue::repeat},
    NamedMember{"timeout", &model::dl_queues::queue::timeout},
    NamedMember{"start_from", &model::dl_queues::queue::start_from},
    NamedMember{"status", &model::dl_queues::queue::status},
};

template <>
inline constexpr auto membersOf<model::dl_queues> = std::tuple{
    NamedMember{"dl", &model::dl_queues::dl},
    NamedMember{"lock", &model::dl_queues::lock},
    NamedMember{"status", &model::dl_queues::status},
};

template <>
inline constexpr auto membersOf<model::dev_value> = std::tuple{
    NamedMember{"modem_id", &model::dev_value::modem_id},
    NamedMember{"timestamp", &model::dev_value::timestamp},
    NamedMember{"obis_code", &model::dev_value::obis_code},
    NamedMember{"tag", &model::dev_value::tag},
    NamedMember{"extended_data", &model::dev_value::extended_data},
    NamedMember{"value", &model::dev_value::value},
    NamedMember{"message_id", &model::dev_value::message_id},
    NamedMember{"ttl", &model::dev_value::ttl},
};

template <>
inline constexpr auto membersOf<model::dev_event> = std::tuple{
    NamedMember{"modem_id", &model::dev_event::modem_id},
    NamedMember{"timestamp", &model::dev_event::timestamp},
    NamedMember{"event_code", &model::dev_event::event_code},
    NamedMember{"message_id", &model::dev_event::message_id},
    NamedMember{"message", &model::dev_event::message},
    NamedMember{"extended_data", &model::dev_event::extended_data},
    NamedMember{"parameter", &model::dev_event::parameter},
    NamedMember{"ttl", &model::dev_event::ttl},
};

template <class Type>
concept HasMembers = std::tuple_size_v<std::remove_cvref_t<decltype(membersOf<Type>)>> != 0;

/// Calls visit(name, first's member, second's member) for every member.
template <HasMembers Record, class Visit>
void forEachMember(const Record& first, const Record& second, Visit visit) {
    std::apply(
        [&](const auto&... member) {
            (visit(member.name, first.*member.pointer, second.*member.pointer), ...);
        },
        membersOf<Record>);
}

} // namespace host
