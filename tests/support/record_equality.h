#pragma once

#include "model/custom_cmd.h"
#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/dl_queues.h"
#include "model/filter_dl.h"
#include "model/filter_eav.h"
#include "model/filter_roll.h"
#include "model/hb_message.h"
#include "model/in_message.h"
#include "model/message.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <concepts>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>
#include <type_traits>

/// Equality and printing of the records, which have neither.
///
/// Two ways to compare. `EXPECT_EQ(actual, expected)`, also of whole lists, and gmock's container
/// matchers: equal means every member, date-times by instant and by being UTC or local, variants by
/// type and value, a null JSON document apart from an empty object. For a message that lists only
/// the members that differ, and for date-times by instant alone:
///
///     EXPECT_EQ(differences(actual, expected, date_times::byInstant), "");
namespace test_support {

enum class date_times {
    byInstantAndZone,
    /// A time that was written as UTC and read back as local time is the same.
    byInstant,
};

template <typename Record, typename Member>
struct named_member {
    std::string_view name;
    Member Record::* pointer;
};
template <typename Record, typename Member>
named_member(const char*, Member Record::*) -> named_member<Record, Member>;

/// Every member of a record, in the order of declaration, as a tuple of named_member.
template <typename Record>
inline constexpr auto membersOf = std::tuple<>{};

template <>
inline constexpr auto membersOf<model::message> = std::tuple{
    named_member{"extra_text", &model::message::extra_text},
    named_member{"extra_value1", &model::message::extra_value1},
    named_member{"extra_value2", &model::message::extra_value2},
    named_member{"modem_id", &model::message::modem_id},
    named_member{"station_id", &model::message::station_id},
    named_member{"ttl", &model::message::ttl},
    named_member{"timestamp", &model::message::timestamp},
    named_member{"time_detected", &model::message::time_detected},
    named_member{"bs_timezone_offset", &model::message::bs_timezone_offset},
    named_member{"phy", &model::message::phy},
    named_member{"snr", &model::message::snr},
    named_member{"rssi", &model::message::rssi},
    named_member{"tag", &model::message::tag},
    named_member{"unique_id", &model::message::unique_id},
    named_member{"data", &model::message::data},
    named_member{"extended_data", &model::message::extended_data},
    named_member{"parse_status", &model::message::parse_status},
    named_member{"hw_type", &model::message::hw_type},
    named_member{"protocol", &model::message::protocol},
    named_member{"payload", &model::message::payload},
};

template <>
inline constexpr auto membersOf<model::dl_message> = std::tuple{
    named_member{"f_ack", &model::dl_message::f_ack},
    named_member{"modem_id", &model::dl_message::modem_id},
    named_member{"timeout", &model::dl_message::timeout},
    named_member{"ttl", &model::dl_message::ttl},
    named_member{"timestamp", &model::dl_message::timestamp},
    named_member{"db_id", &model::dl_message::db_id},
    named_member{"api_key", &model::dl_message::api_key},
    named_member{"status", &model::dl_message::status},
    named_member{"data", &model::dl_message::data},
    named_member{"payload", &model::dl_message::payload},
    named_member{"extra_text", &model::dl_message::extra_text},
};

template <>
inline constexpr auto membersOf<model::hb_message> = std::tuple{
    named_member{"modem_id", &model::hb_message::modem_id},
    named_member{"station_id", &model::hb_message::station_id},
    named_member{"iterator", &model::hb_message::iterator},
    named_member{"phy", &model::hb_message::phy},
    named_member{"snr", &model::hb_message::snr},
    named_member{"rssi", &model::hb_message::rssi},
    named_member{"hw_type", &model::hb_message::hw_type},
    named_member{"protocol", &model::hb_message::protocol},
    named_member{"time_detected", &model::hb_message::time_detected},
    named_member{"time_saved", &model::hb_message::time_saved},
    named_member{"payload", &model::hb_message::payload},
    named_member{"bs_tz", &model::hb_message::bs_tz},
    named_member{"temperature", &model::hb_message::temperature},
    named_member{"voltage", &model::hb_message::voltage},
};

template <>
inline constexpr auto membersOf<model::in_message> = std::tuple{
    named_member{"dl_phy", &model::in_message::dl_phy},
    named_member{"dl_mode", &model::in_message::dl_mode},
    named_member{"last_dl_bs", &model::in_message::last_dl_bs},
    named_member{"last_dl_bs_aver_busyness", &model::in_message::last_dl_bs_aver_busyness},
    named_member{"last_dl_bs_busyness", &model::in_message::last_dl_bs_busyness},
    named_member{"last_success_dl_ts", &model::in_message::last_success_dl_ts},
    named_member{"modem_id", &model::in_message::modem_id},
    named_member{"station_id", &model::in_message::station_id},
    named_member{"iterator", &model::in_message::iterator},
    named_member{"phy", &model::in_message::phy},
    named_member{"snr", &model::in_message::snr},
    named_member{"rssi", &model::in_message::rssi},
    named_member{"hw_type", &model::in_message::hw_type},
    named_member{"protocol", &model::in_message::protocol},
    named_member{"time_detected", &model::in_message::time_detected},
    named_member{"time_saved", &model::in_message::time_saved},
    named_member{"payload", &model::in_message::payload},
    named_member{"bs_tz", &model::in_message::bs_tz},
};

template <>
inline constexpr auto membersOf<model::custom_cmd> = std::tuple{
    named_member{"type", &model::custom_cmd::type},
    named_member{"body", &model::custom_cmd::body},
    named_member{"instance", &model::custom_cmd::instance},
    named_member{"modem_id", &model::custom_cmd::modem_id},
    named_member{"query", &model::custom_cmd::query},
};

template <>
inline constexpr auto membersOf<model::dl_queues::element> = std::tuple{
    named_member{"data", &model::dl_queues::element::data},
    named_member{"type", &model::dl_queues::element::type},
    named_member{"db_id", &model::dl_queues::element::db_id},
    named_member{"status", &model::dl_queues::element::status},
    named_member{"repeat", &model::dl_queues::element::repeat},
};

template <>
inline constexpr auto membersOf<model::dl_queues::queue> = std::tuple{
    named_member{"elements", &model::dl_queues::queue::elements},
    named_member{"repeat", &model::dl_queues::queue::repeat},
    named_member{"timeout", &model::dl_queues::queue::timeout},
    named_member{"start_from", &model::dl_queues::queue::start_from},
    named_member{"status", &model::dl_queues::queue::status},
};

template <>
inline constexpr auto membersOf<model::dl_queues> = std::tuple{
    named_member{"dl", &model::dl_queues::dl},
    named_member{"lock", &model::dl_queues::lock},
    named_member{"status", &model::dl_queues::status},
};

template <>
inline constexpr auto membersOf<model::dev_value> = std::tuple{
    named_member{"modem_id", &model::dev_value::modem_id},
    named_member{"timestamp", &model::dev_value::timestamp},
    named_member{"obis_code", &model::dev_value::obis_code},
    named_member{"tag", &model::dev_value::tag},
    named_member{"extended_data", &model::dev_value::extended_data},
    named_member{"value", &model::dev_value::value},
    named_member{"message_id", &model::dev_value::message_id},
    named_member{"ttl", &model::dev_value::ttl},
};

template <>
inline constexpr auto membersOf<model::dev_event> = std::tuple{
    named_member{"modem_id", &model::dev_event::modem_id},
    named_member{"timestamp", &model::dev_event::timestamp},
    named_member{"event_code", &model::dev_event::event_code},
    named_member{"message_id", &model::dev_event::message_id},
    named_member{"message", &model::dev_event::message},
    named_member{"extended_data", &model::dev_event::extended_data},
    named_member{"parameter", &model::dev_event::parameter},
    named_member{"ttl", &model::dev_event::ttl},
};

template <>
inline constexpr auto membersOf<model::filter_roll> = std::tuple{
    named_member{"modem_ids", &model::filter_roll::modem_ids},
    named_member{"tags", &model::filter_roll::tags},
    named_member{"begin", &model::filter_roll::begin},
    named_member{"end", &model::filter_roll::end},
    named_member{"by_time_detected", &model::filter_roll::by_time_detected},
    named_member{"limit", &model::filter_roll::limit},
};

template <>
inline constexpr auto membersOf<model::filter_dl> = std::tuple{
    named_member{"modem_ids", &model::filter_dl::modem_ids},
    named_member{"begin", &model::filter_dl::begin},
    named_member{"end", &model::filter_dl::end},
    named_member{"limit", &model::filter_dl::limit},
};

template <>
inline constexpr auto membersOf<model::filter_eav> = std::tuple{
    named_member{"modem_ids", &model::filter_eav::modem_ids},
    named_member{"tags", &model::filter_eav::tags},
    named_member{"obis_codes", &model::filter_eav::obis_codes},
    named_member{"begin", &model::filter_eav::begin},
    named_member{"end", &model::filter_eav::end},
    named_member{"limit", &model::filter_eav::limit},
    named_member{"first_last", &model::filter_eav::first_last},
};

template <typename Type>
concept record = std::tuple_size_v<std::remove_cvref_t<decltype(membersOf<Type>)>> != 0;

/// Calls visit(name, first's member, second's member) for every member.
template <record Record, typename Visit>
void forEachMember(const Record& first, const Record& second, Visit visit) {
    std::apply(
        [&](const auto&... member) {
            (visit(member.name, first.*member.pointer, second.*member.pointer), ...);
        },
        membersOf<Record>);
}

template <typename Value>
bool sameMember(const Value& first, const Value& second, date_times times) {
    if constexpr (std::same_as<Value, QDateTime>) {
        return first == second && first.isNull() == second.isNull() &&
               (times == date_times::byInstant || first.timeSpec() == second.timeSpec());
    } else if constexpr (std::same_as<Value, QVariant>) {
        // By itself QVariant converts before it compares: the number 1 equals the text "1".
        return first.userType() == second.userType() && first == second;
    } else if constexpr (std::floating_point<Value>) {
        return first == second || (std::isnan(first) && std::isnan(second));
    } else {
        return first == second;
    }
}

template <typename Value>
void printMember(const Value& value, std::ostream& out) {
    if constexpr (std::is_enum_v<Value>) {
        out << static_cast<std::underlying_type_t<Value>>(value);
    } else {
        out << testing::PrintToString(value);
    }
}

/// One line for each member that differs: its name, the actual and the expected value. Empty if the
/// records are equal.
template <record Record>
std::string differences(const Record& actual, const Record& expected,
                        date_times times = date_times::byInstantAndZone) {
    std::ostringstream lines;
    forEachMember(actual, expected,
                  [&](std::string_view name, const auto& actualMember, const auto& expectedMember) {
                      if (!sameMember(actualMember, expectedMember, times)) {
                          lines << name << ": ";
                          printMember(actualMember, lines);
                          lines << ", expected ";
                          printMember(expectedMember, lines);
                          lines << '\n';
                      }
                  });
    return lines.str();
}

} // namespace test_support

/// Found by argument-dependent lookup, also for the members of a list of records.
namespace model {

template <test_support::record Record>
bool operator==(const Record& first, const Record& second) {
    bool same = true;
    test_support::forEachMember(
        first, second, [&](std::string_view, const auto& firstMember, const auto& secondMember) {
            same = same && test_support::sameMember(firstMember, secondMember,
                                                    test_support::date_times::byInstantAndZone);
        });
    return same;
}

template <test_support::record Record>
void PrintTo(const Record& record, std::ostream* out) {
    *out << '{';
    const char* comma = "";
    test_support::forEachMember(record, record,
                                [&](std::string_view name, const auto& member, const auto&) {
                                    *out << comma << name << ": ";
                                    test_support::printMember(member, *out);
                                    comma = ", ";
                                });
    *out << '}';
}

} // namespace model
