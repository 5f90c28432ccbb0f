#pragma once

#include "host/records/record_members.h"
#include "model/custom_cmd.h"
#include "model/filter_dl.h"
#include "model/filter_eav.h"
#include "model/filter_roll.h"
#include "model/hb_message.h"
#include "model/in_message.h"
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

/// The records and filters that the host's own table leaves out.
template <>
inline constexpr auto host::membersOf<model::hb_message> = std::tuple{
    host::NamedMember{"modem_id", &model::hb_message::modem_id},
    host::NamedMember{"station_id", &model::hb_message::station_id},
    host::NamedMember{"iterator", &model::hb_message::iterator},
    host::NamedMember{"phy", &model::hb_message::phy},
    host::NamedMember{"snr", &model::hb_message::snr},
    host::NamedMember{"rssi", &model::hb_message::rssi},
    host::NamedMember{"hw_type", &model::hb_message::hw_type},
    host::NamedMember{"protocol", &model::hb_message::protocol},
    host::NamedMember{"time_detected", &model::hb_message::time_detected},
    host::NamedMember{"time_saved", &model::hb_message::time_saved},
    host::NamedMember{"payload", &model::hb_message::payload},
    host::NamedMember{"bs_tz", &model::hb_message::bs_tz},
    host::NamedMember{"temperature", &model::hb_message::temperature},
    host::NamedMember{"voltage", &model::hb_message::voltage},
};

template <>
inline constexpr auto host::membersOf<model::in_message> = std::tuple{
    host::NamedMember{"dl_phy", &model::in_message::dl_phy},
    host::NamedMember{"dl_mode", &model::in_message::dl_mode},
    host::NamedMember{"last_dl_bs", &model::in_message::last_dl_bs},
    host::NamedMember{"last_dl_bs_aver_busyness", &model::in_message::last_dl_bs_aver_busyness},
    host::NamedMember{"last_dl_bs_busyness", &model::in_message::last_dl_bs_busyness},
    host::NamedMember{"last_success_dl_ts", &model::in_message::last_success_dl_ts},
    host::NamedMember{"modem_id", &model::in_message::modem_id},
    host::NamedMember{"station_id", &model::in_message::station_id},
    host::NamedMember{"iterator", &model::in_message::iterator},
    host::NamedMember{"phy", &model::in_message::phy},
    host::NamedMember{"snr", &model::in_message::snr},
    host::NamedMember{"rssi", &model::in_message::rssi},
    host::NamedMember{"hw_type", &model::in_message::hw_type},
    host::NamedMember{"protocol", &model::in_message::protocol},
    host::NamedMember{"time_detected", &model::in_message::time_detected},
    host::NamedMember{"time_saved", &model::in_message::time_saved},
    host::NamedMember{"payload", &model::in_message::payload},
    host::NamedMember{"bs_tz", &model::in_message::bs_tz},
};

template <>
inline constexpr auto host::membersOf<model::custom_cmd> = std::tuple{
    host::NamedMember{"type", &model::custom_cmd::type},
    host::NamedMember{"body", &model::custom_cmd::body},
    host::NamedMember{"instance", &model::custom_cmd::instance},
    host::NamedMember{"modem_id", &model::custom_cmd::modem_id},
    host::NamedMember{"query", &model::custom_cmd::query},
};

template <>
inline constexpr auto host::membersOf<model::filter_roll> = std::tuple{
    host::NamedMember{"modem_ids", &model::filter_roll::modem_ids},
    host::NamedMember{"tags", &model::filter_roll::tags},
    host::NamedMember{"begin", &model::filter_roll::begin},
    host::NamedMember{"end", &model::filter_roll::end},
    host::NamedMember{"by_time_detected", &model::filter_roll::by_time_detected},
    host::NamedMember{"limit", &model::filter_roll::limit},
};

template <>
inline constexpr auto host::membersOf<model::filter_dl> = std::tuple{
    host::NamedMember{"modem_ids", &model::filter_dl::modem_ids},
    host::NamedMember{"begin", &model::filter_dl::begin},
    host::NamedMember{"end", &model::filter_dl::end},
    host::NamedMember{"limit", &model::filter_dl::limit},
};

template <>
inline constexpr auto host::membersOf<model::filter_eav> = std::tuple{
    host::NamedMember{"modem_ids", &model::filter_eav::modem_ids},
    host::NamedMember{"tags", &model::filter_eav::tags},
    host::NamedMember{"obis_codes", &model::filter_eav::obis_codes},
    host::NamedMember{"begin", &model::filter_eav::begin},
    host::NamedMember{"end", &model::filter_eav::end},
    host::NamedMember{"limit", &model::filter_eav::limit},
    host::NamedMember{"first_last", &model::filter_eav::first_last},
};

/// Equality and printing of the records, which have neither.
///
/// Two ways to compare. `EXPECT_EQ(actual, expected)`, also of whole lists, and gmock's container
/// matchers: equal means every member, date-times by instant and by being UTC or local, variants by
/// type and value, a null JSON document apart from an empty object. For a message that lists only
/// the members that differ, and for date-times by instant alone:
///
///     EXPECT_EQ(differences(actual, expected, date_times::byInstant), "");
namespace test_support {

using host::forEachMember;
using host::membersOf;

enum class date_times {
    byInstantAndZone,
    /// A time that was written as UTC and read back as local time is the same.
    byInstant,
};

template <typename Type>
concept record = host::HasMembers<Type>;

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
