#include "tests/support/default_initialized.h"
#include "tests/support/record_equality.h"
#include "tests/support/record_samples.h"

#include <gtest/gtest.h>

#include <list>
#include <tuple>
#include <type_traits>

namespace {

using namespace test_support;
using namespace test_support::literals;

template <typename Record>
class EveryRecord : public testing::Test {};

using records =
    testing::Types<model::message, model::dl_message, model::hb_message, model::in_message,
                   model::custom_cmd, model::dl_queues, model::dl_queues::queue,
                   model::dl_queues::element, model::dev_value, model::dev_event,
                   model::filter_roll, model::filter_dl, model::filter_eav>;
TYPED_TEST_SUITE(EveryRecord, records);

TYPED_TEST(EveryRecord, IsAPlainAggregateWithValueSemantics) {
    static_assert(std::is_aggregate_v<TypeParam>);
    static_assert(std::is_default_constructible_v<TypeParam>);
    static_assert(std::is_copy_constructible_v<TypeParam>);
    static_assert(std::is_copy_assignable_v<TypeParam>);
    static_assert(std::is_move_constructible_v<TypeParam>);
    static_assert(std::is_move_assignable_v<TypeParam>);
    static_assert(!std::is_polymorphic_v<TypeParam>);
}

template <typename Value>
bool isDefault(const Value& value) {
    if constexpr (std::is_arithmetic_v<Value>) {
        return value == Value{};
    } else if constexpr (std::is_enum_v<Value>) {
        return static_cast<int>(value) == 0;
    } else if constexpr (requires { value.isNull(); }) {
        return value.isNull();
    } else if constexpr (requires { value.isEmpty(); }) {
        return value.isEmpty();
    } else {
        return value.empty();
    }
}

TYPED_TEST(EveryRecord, StartsWithZerosAndEmptyMembers) {
    const default_initialized<TypeParam> record;
    forEachMember(*record, *record, [](std::string_view name, const auto& member, const auto&) {
        EXPECT_TRUE(isDefault(member)) << name << " is " << testing::PrintToString(member);
    });
}

// A designated initialiser compiles only in the order of declaration, and a structured binding only
// with the exact number of members. Both are what a host that builds records relies on.

TEST(Message, HasItsTwentyMembersInOrder) {
    const model::message record = sampleMessage();
    const auto& [extra_text, extra_value1, extra_value2, modem_id, station_id, ttl, timestamp,
                 time_detected, bs_timezone_offset, phy, snr, rssi, tag, unique_id, data,
                 extended_data, parse_status, hw_type, protocol, payload] = record;
    EXPECT_EQ(extra_text, "the host's own"_q);
    EXPECT_EQ(extra_value1, 71);
    EXPECT_EQ(extra_value2, 72);
    EXPECT_EQ(modem_id, 1001);
    EXPECT_EQ(station_id, 2002);
    EXPECT_EQ(ttl, utcMsecs(1900000000123));
    EXPECT_EQ(timestamp, utcSecs(1700000001));
    EXPECT_EQ(time_detected, utcSecs(1700000002));
    EXPECT_EQ(bs_timezone_offset, 180);
    EXPECT_EQ(phy, "phy-868"_q);
    EXPECT_EQ(snr, -7);
    EXPECT_EQ(rssi, -112);
    EXPECT_EQ(tag, "hourly"_q);
    EXPECT_EQ(unique_id, 0x1badcafeU);
    EXPECT_EQ(data.object().value("n"_q), QJsonValue{5});
    EXPECT_EQ(extended_data.object().value("e"_q), QJsonValue{"x"_q});
    EXPECT_EQ(parse_status, "ok"_q);
    EXPECT_EQ(hw_type, "meter-3"_q);
    EXPECT_EQ(protocol, "proto-9"_q);
    EXPECT_EQ(payload, "\x01\xab"_qba);
    static_assert(std::tuple_size_v<decltype(membersOf<model::message>)> == 20);
    static_assert(std::is_same_v<decltype(record.extra_value1), qint64>);
    static_assert(std::is_same_v<decltype(record.unique_id), quint64>);
    static_assert(std::is_same_v<decltype(record.data), QJsonDocument>);
}

TEST(DlMessage, HasItsElevenMembersInOrder) {
    const model::dl_message record = sampleCommand();
    const auto& [f_ack, modem_id, timeout, ttl, timestamp, db_id, api_key, status, data, payload,
                 extra_text] = record;
    EXPECT_EQ(f_ack, 1);
    EXPECT_EQ(modem_id, 1001);
    EXPECT_EQ(timeout, 3600);
    EXPECT_EQ(ttl, utcMsecs(1900000000456));
    EXPECT_EQ(timestamp, utcSecs(1700000003));
    EXPECT_EQ(db_id, "not stored"_q);
    EXPECT_EQ(api_key, "key-42"_q);
    EXPECT_EQ(status, model::dl_message::dl_status::EXECUTED);
    EXPECT_EQ(data, (QJsonObject{{"n"_q, 5}}));
    EXPECT_EQ(payload, "\xde\xad\xbe\xef"_qba);
    EXPECT_EQ(extra_text, "the host's own"_q);
    static_assert(std::tuple_size_v<decltype(membersOf<model::dl_message>)> == 11);
    static_assert(std::is_same_v<decltype(record.data), QJsonObject>);
}

TEST(DlMessage, NumbersItsStates) {
    using status = model::dl_message::dl_status;
    static_assert(std::is_same_v<std::underlying_type_t<status>, int>);
    EXPECT_EQ(static_cast<int>(status::PENDING), 0);
    EXPECT_EQ(static_cast<int>(status::WAIT_DATA), 1);
    EXPECT_EQ(static_cast<int>(status::EXECUTED), 2);
    EXPECT_EQ(static_cast<int>(status::TIMEOUT), 3);
}

TEST(DlMessage, IsPendingByDefault) {
    const default_initialized<model::dl_message> record;
    EXPECT_EQ(record->status, model::dl_message::dl_status::PENDING);
}

TEST(DevValue, HasItsEightMembersInOrder) {
    const model::dev_value record = sampleValue();
    const auto& [modem_id, timestamp, obis_code, tag, extended_data, value, message_id, ttl] =
        record;
    EXPECT_EQ(modem_id, 1001);
    EXPECT_EQ(timestamp, utcSecs(1700000004));
    EXPECT_EQ(obis_code, "1-0:1.8.0"_q);
    EXPECT_EQ(tag, "energy"_q);
    EXPECT_EQ(extended_data.object(), (QJsonObject{{"e"_q, 7}}));
    EXPECT_EQ(value, QVariant{2.5});
    EXPECT_EQ(message_id, "1badcafe"_q);
    EXPECT_EQ(ttl, utcMsecs(1900000000789));
    static_assert(std::tuple_size_v<decltype(membersOf<model::dev_value>)> == 8);
}

TEST(DevEvent, HasItsEightMembersInOrder) {
    const model::dev_event record = sampleEvent();
    const auto& [modem_id, timestamp, event_code, message_id, message, extended_data, parameter,
                 ttl] = record;
    EXPECT_EQ(modem_id, 1001);
    EXPECT_EQ(timestamp, utcSecs(1700000005));
    EXPECT_EQ(event_code, 404);
    EXPECT_EQ(message_id, "1badcafe"_q);
    EXPECT_EQ(message, "cover opened"_q);
    EXPECT_EQ(extended_data.object(), (QJsonObject{{"e"_q, true}}));
    EXPECT_EQ(parameter, 12);
    EXPECT_EQ(ttl, utcMsecs(1900000000987));
    static_assert(std::tuple_size_v<decltype(membersOf<model::dev_event>)> == 8);
}

TEST(HbMessage, HasItsFourteenMembersInOrder) {
    const model::hb_message record{.modem_id = 1,
                                   .station_id = 2,
                                   .iterator = 3,
                                   .phy = "4"_q,
                                   .snr = 5,
                                   .rssi = 6,
                                   .hw_type = "7"_q,
                                   .protocol = "8"_q,
                                   .time_detected = utcSecs(9),
                                   .time_saved = utcSecs(10),
                                   .payload = "11"_qba,
                                   .bs_tz = 12,
                                   .temperature = 13.5,
                                   .voltage = 14.5};
    const auto& [modem_id, station_id, iterator, phy, snr, rssi, hw_type, protocol, time_detected,
                 time_saved, payload, bs_tz, temperature, voltage] = record;
    EXPECT_EQ(std::tuple(modem_id, station_id, iterator, snr, rssi, bs_tz),
              std::tuple(1, 2, 3, 5, 6, 12));
    EXPECT_EQ(std::tuple(phy, hw_type, protocol), std::tuple("4"_q, "7"_q, "8"_q));
    EXPECT_EQ(std::tuple(time_detected, time_saved), std::tuple(utcSecs(9), utcSecs(10)));
    EXPECT_EQ(payload, "11"_qba);
    EXPECT_EQ(std::tuple(temperature, voltage), std::tuple(13.5, 14.5));
    static_assert(std::tuple_size_v<decltype(membersOf<model::hb_message>)> == 14);
}

TEST(InMessage, HasItsEighteenMembersInOrder) {
    const model::in_message record{.dl_phy = "1"_q,
                                   .dl_mode = "2"_q,
                                   .last_dl_bs = 3,
                                   .last_dl_bs_aver_busyness = 4.5,
                                   .last_dl_bs_busyness = 5.5,
                                   .last_success_dl_ts = 6,
                                   .modem_id = 7,
                                   .station_id = 8,
                                   .iterator = 9,
                                   .phy = "10"_q,
                                   .snr = 11,
                                   .rssi = 12,
                                   .hw_type = "13"_q,
                                   .protocol = "14"_q,
                                   .time_detected = utcSecs(15),
                                   .time_saved = utcSecs(16),
                                   .payload = "17"_qba,
                                   .bs_tz = 18};
    const auto& [dl_phy, dl_mode, last_dl_bs, average, busyness, last_success_dl_ts, modem_id,
                 station_id, iterator, phy, snr, rssi, hw_type, protocol, time_detected, time_saved,
                 payload, bs_tz] = record;
    EXPECT_EQ(std::tuple(dl_phy, dl_mode, phy, hw_type, protocol),
              std::tuple("1"_q, "2"_q, "10"_q, "13"_q, "14"_q));
    EXPECT_EQ(std::tuple(average, busyness), std::tuple(4.5, 5.5));
    EXPECT_EQ(std::tuple(last_dl_bs, last_success_dl_ts, modem_id, station_id, iterator, snr, rssi,
                         bs_tz),
              std::tuple(3, 6, 7, 8, 9, 11, 12, 18));
    EXPECT_EQ(std::tuple(time_detected, time_saved), std::tuple(utcSecs(15), utcSecs(16)));
    EXPECT_EQ(payload, "17"_qba);
    static_assert(std::tuple_size_v<decltype(membersOf<model::in_message>)> == 18);
}

TEST(CustomCmd, HasItsFiveMembersInOrder) {
    const model::custom_cmd record{.type = "1"_q,
                                   .body = {{"b"_q, 2}},
                                   .instance = "3"_q,
                                   .modem_id = {4, 5},
                                   .query = {{"q"_q, "6"_q}}};
    const auto& [type, body, instance, modem_id, query] = record;
    EXPECT_EQ(std::tuple(type, instance), std::tuple("1"_q, "3"_q));
    EXPECT_EQ(body, (QJsonObject{{"b"_q, 2}}));
    EXPECT_EQ(modem_id, (QList<int>{4, 5}));
    EXPECT_EQ(query.value("q"_q), "6"_q);
}

TEST(DlQueues, HasItsMembersInOrder) {
    using status = enum model::dl_queues::status;
    const model::dl_queues::element filledElement{
        .data = {{"d"_q, 1}}, .type = "2"_q, .db_id = "3"_q, .status = status::DONE, .repeat = 5};
    const model::dl_queues::queue filledQueue{.elements = {{"e7"_q, filledElement}},
                                              .repeat = 2,
                                              .timeout = 3,
                                              .start_from = 4,
                                              .status = status::WAIT};
    const model::dl_queues record{
        .dl = {{"q1"_q, filledQueue}}, .lock = true, .status = status::FAIL};
    const auto& [dl, lock, overall] = record;
    const auto& [elements, repeat, timeout, startFrom, queueStatus] = *dl.find("q1"_q);
    const auto& [data, type, dbId, elementStatus, elementRepeat] = *elements.find("e7"_q);
    EXPECT_EQ(std::tuple(lock, overall), std::tuple(true, status::FAIL));
    EXPECT_EQ(std::tuple(repeat, timeout, startFrom, queueStatus),
              std::tuple(2, 3, 4, status::WAIT));
    EXPECT_EQ(data, (QJsonObject{{"d"_q, 1}}));
    EXPECT_EQ(std::tuple(type, dbId, elementStatus, elementRepeat),
              std::tuple("2"_q, "3"_q, status::DONE, 5));
}

TEST(DlQueues, NumbersItsStates) {
    using status = enum model::dl_queues::status;
    static_assert(std::is_same_v<std::underlying_type_t<status>, int>);
    EXPECT_EQ(static_cast<int>(status::NONE), 0);
    EXPECT_EQ(static_cast<int>(status::DONE), 1);
    EXPECT_EQ(static_cast<int>(status::WAIT), 2);
    EXPECT_EQ(static_cast<int>(status::FAIL), 3);
}

TEST(Filters, HaveTheirMembersInOrder) {
    const model::filter_roll roll{.modem_ids = {1},
                                  .tags = {"2"_q},
                                  .begin = utcSecs(3),
                                  .end = utcSecs(4),
                                  .by_time_detected = true,
                                  .limit = 6};
    const model::filter_dl dl{.modem_ids = {1}, .begin = utcSecs(2), .end = utcSecs(3), .limit = 4};
    const model::filter_eav eav{.modem_ids = {1},
                                .tags = {"2"_q},
                                .obis_codes = {"3"_q},
                                .begin = utcSecs(4),
                                .end = utcSecs(5),
                                .limit = 6,
                                .first_last = true};
    const auto& [rollIds, rollTags, rollBegin, rollEnd, byTimeDetected, rollLimit] = roll;
    const auto& [dlIds, dlBegin, dlEnd, dlLimit] = dl;
    const auto& [eavIds, eavTags, obisCodes, eavBegin, eavEnd, eavLimit, firstLast] = eav;
    static_assert(std::is_same_v<decltype(roll.modem_ids), std::list<int>>);
    static_assert(std::is_same_v<decltype(roll.tags), std::list<QString>>);
    EXPECT_EQ(rollIds, std::list{1});
    EXPECT_EQ(rollTags, std::list{"2"_q});
    EXPECT_EQ(std::tuple(rollBegin, rollEnd), std::tuple(utcSecs(3), utcSecs(4)));
    EXPECT_EQ(std::tuple(byTimeDetected, rollLimit), std::tuple(true, 6));
    EXPECT_EQ(dlIds, std::list{1});
    EXPECT_EQ(std::tuple(dlBegin, dlEnd, dlLimit), std::tuple(utcSecs(2), utcSecs(3), 4));
    EXPECT_EQ(eavIds, std::list{1});
    EXPECT_EQ(std::tuple(eavTags, obisCodes), std::tuple(std::list{"2"_q}, std::list{"3"_q}));
    EXPECT_EQ(std::tuple(eavBegin, eavEnd), std::tuple(utcSecs(4), utcSecs(5)));
    EXPECT_EQ(std::tuple(eavLimit, firstLast), std::tuple(6, true));
}

TEST(Message, CarriesTheHostsOwnMembersWhenCopied) {
    const model::message original = sampleMessage();
    const model::message copy = original;
    EXPECT_EQ(copy.extra_text, "the host's own"_q);
    EXPECT_EQ(copy.extra_value1, 71);
    EXPECT_EQ(copy.extra_value2, 72);
    EXPECT_EQ(differences(copy, original), "");
}

TEST(Message, CopiesAreIndependent) {
    const model::message original = sampleMessage();
    model::message copy = original;
    copy.payload[0] = '\x7f';
    copy.tag.append("+"_q);
    EXPECT_EQ(differences(original, sampleMessage()), "");
}

} // namespace
