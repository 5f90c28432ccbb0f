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

#include "tests/support/default_initialized.h"
#include "tests/support/record_equality.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <type_traits>

namespace {

constexpr std::ptrdiff_t alignedTo(std::size_t alignment, std::ptrdiff_t offset) {
    const auto step = static_cast<std::ptrdiff_t>(alignment);
    return (offset + step - 1) / step * step;
}

/// Expects just these members, of these types, one behind the other as the compiler lays out a
/// plain record. A host reads and writes them at these places.
template <typename Record, typename... Members>
void expectLayout(Members Record::*... members) {
    static_assert(std::is_aggregate_v<Record> && !std::is_polymorphic_v<Record>);
    static_assert(std::is_copy_constructible_v<Record> && std::is_copy_assignable_v<Record>);
    static_assert(std::is_nothrow_move_constructible_v<Record>);

    const Record record{};
    const auto* start = reinterpret_cast<const char*>(&record);
    std::ptrdiff_t end = 0;
    int number = 0;
    const auto expectNext = [&]<typename Member>(Member Record::* member) {
        ++number;
        const std::ptrdiff_t expected = alignedTo(alignof(Member), end);
        EXPECT_EQ(reinterpret_cast<const char*>(&(record.*member)) - start, expected)
            << "member " << number;
        end = expected + static_cast<std::ptrdiff_t>(sizeof(Member));
    };
    (expectNext(members), ...);
    EXPECT_EQ(static_cast<std::ptrdiff_t>(sizeof(Record)),
              alignedTo(std::max({alignof(Members)...}), end));
}

TEST(RecordLayout, OfAnUplinkMessage) {
    using model::message;
    // Two numbers on the 64-bit platforms, counted by hand, hold the rules below to account.
    if constexpr (sizeof(void*) == 8) {
        const message record;
        EXPECT_EQ(reinterpret_cast<const char*>(&record.unique_id) -
                      reinterpret_cast<const char*>(&record),
                  88);
        EXPECT_EQ(sizeof(message), 144u);
    }
    expectLayout<message, QString, qint64, qint64, int, int, QDateTime, QDateTime, QDateTime, int,
                 QString, int, int, QString, quint64, QJsonDocument, QJsonDocument, QString,
                 QString, QString, QByteArray>(
        &message::extra_text, &message::extra_value1, &message::extra_value2, &message::modem_id,
        &message::station_id, &message::ttl, &message::timestamp, &message::time_detected,
        &message::bs_timezone_offset, &message::phy, &message::snr, &message::rssi, &message::tag,
        &message::unique_id, &message::data, &message::extended_data, &message::parse_status,
        &message::hw_type, &message::protocol, &message::payload);
}

TEST(RecordLayout, OfADownlinkCommand) {
    using model::dl_message;
    expectLayout<dl_message, int, int, int, QDateTime, QDateTime, QString, QString,
                 dl_message::dl_status, QJsonObject, QByteArray, QString>(
        &dl_message::f_ack, &dl_message::modem_id, &dl_message::timeout, &dl_message::ttl,
        &dl_message::timestamp, &dl_message::db_id, &dl_message::api_key, &dl_message::status,
        &dl_message::data, &dl_message::payload, &dl_message::extra_text);
}

TEST(RecordLayout, OfAHeartbeat) {
    using model::hb_message;
    expectLayout<hb_message, int, int, int, QString, int, int, QString, QString, QDateTime,
                 QDateTime, QByteArray, int, double, double>(
        &hb_message::modem_id, &hb_message::station_id, &hb_message::iterator, &hb_message::phy,
        &hb_message::snr, &hb_message::rssi, &hb_message::hw_type, &hb_message::protocol,
        &hb_message::time_detected, &hb_message::time_saved, &hb_message::payload,
        &hb_message::bs_tz, &hb_message::temperature, &hb_message::voltage);
}

TEST(RecordLayout, OfAnIncomingMessage) {
    using model::in_message;
    expectLayout<in_message, QString, QString, int, double, double, int, int, int, int, QString,
                 int, int, QString, QString, QDateTime, QDateTime, QByteArray, int>(
        &in_message::dl_phy, &in_message::dl_mode, &in_message::last_dl_bs,
        &in_message::last_dl_bs_aver_busyness, &in_message::last_dl_bs_busyness,
        &in_message::last_success_dl_ts, &in_message::modem_id, &in_message::station_id,
        &in_message::iterator, &in_message::phy, &in_message::snr, &in_message::rssi,
        &in_message::hw_type, &in_message::protocol, &in_message::time_detected,
        &in_message::time_saved, &in_message::payload, &in_message::bs_tz);
}

TEST(RecordLayout, OfACustomCommand) {
    using model::custom_cmd;
    expectLayout<custom_cmd, QString, QJsonObject, QString, QList<int>, QMap<QString, QString>>(
        &custom_cmd::type, &custom_cmd::body, &custom_cmd::instance, &custom_cmd::modem_id,
        &custom_cmd::query);
}

TEST(RecordLayout, OfTheDownlinkQueues) {
    using model::dl_queues;
    using status = enum dl_queues::status;
    expectLayout<dl_queues, QMap<QString, dl_queues::queue>, bool, status>(
        &dl_queues::dl, &dl_queues::lock, &dl_queues::status);
}

TEST(RecordLayout, OfADownlinkQueue) {
    using model::dl_queues;
    using queue = dl_queues::queue;
    using status = enum dl_queues::status;
    expectLayout<queue, QMap<QString, dl_queues::element>, int, int, int, status>(
        &queue::elements, &queue::repeat, &queue::timeout, &queue::start_from, &queue::status);
}

TEST(RecordLayout, OfAQueueElement) {
    using model::dl_queues;
    using element = dl_queues::element;
    using status = enum dl_queues::status;
    expectLayout<element, QJsonObject, QString, QString, status, int>(
        &element::data, &element::type, &element::db_id, &element::status, &element::repeat);
}

TEST(RecordLayout, OfAValue) {
    using model::dev_value;
    expectLayout<dev_value, int, QDateTime, QString, QString, QJsonDocument, QVariant, QString,
                 QDateTime>(&dev_value::modem_id, &dev_value::timestamp, &dev_value::obis_code,
                            &dev_value::tag, &dev_value::extended_data, &dev_value::value,
                            &dev_value::message_id, &dev_value::ttl);
}

TEST(RecordLayout, OfAnEvent) {
    using model::dev_event;
    expectLayout<dev_event, int, QDateTime, int, QString, QString, QJsonDocument, int, QDateTime>(
        &dev_event::modem_id, &dev_event::timestamp, &dev_event::event_code, &dev_event::message_id,
        &dev_event::message, &dev_event::extended_data, &dev_event::parameter, &dev_event::ttl);
}

TEST(RecordLayout, OfTheUplinkFilter) {
    using model::filter_roll;
    expectLayout<filter_roll, std::list<int>, std::list<QString>, QDateTime, QDateTime, bool, int>(
        &filter_roll::modem_ids, &filter_roll::tags, &filter_roll::begin, &filter_roll::end,
        &filter_roll::by_time_detected, &filter_roll::limit);
}

TEST(RecordLayout, OfTheDownlinkFilter) {
    using model::filter_dl;
    expectLayout<filter_dl, std::list<int>, QDateTime, QDateTime, int>(
        &filter_dl::modem_ids, &filter_dl::begin, &filter_dl::end, &filter_dl::limit);
}

TEST(RecordLayout, OfTheEavFilter) {
    using model::filter_eav;
    expectLayout<filter_eav, std::list<int>, std::list<QString>, std::list<QString>, QDateTime,
                 QDateTime, int, bool>(
        &filter_eav::modem_ids, &filter_eav::tags, &filter_eav::obis_codes, &filter_eav::begin,
        &filter_eav::end, &filter_eav::limit, &filter_eav::first_last);
}

TEST(RecordNumbers, OfACommandsStatus) {
    using status = model::dl_message::dl_status;
    static_assert(std::is_same_v<std::underlying_type_t<status>, int>);
    EXPECT_EQ(static_cast<int>(status::PENDING), 0);
    EXPECT_EQ(static_cast<int>(status::WAIT_DATA), 1);
    EXPECT_EQ(static_cast<int>(status::EXECUTED), 2);
    EXPECT_EQ(static_cast<int>(status::TIMEOUT), 3);
    EXPECT_EQ(test_support::default_initialized<model::dl_message>{}->status, status::PENDING);
}

TEST(RecordNumbers, OfAQueuesStatus) {
    using status = enum model::dl_queues::status;
    static_assert(std::is_same_v<std::underlying_type_t<status>, int>);
    EXPECT_EQ(static_cast<int>(status::NONE), 0);
    EXPECT_EQ(static_cast<int>(status::DONE), 1);
    EXPECT_EQ(static_cast<int>(status::WAIT), 2);
    EXPECT_EQ(static_cast<int>(status::FAIL), 3);
    EXPECT_EQ(test_support::default_initialized<model::dl_queues>{}->status, status::NONE);
    EXPECT_EQ(test_support::default_initialized<model::dl_queues::queue>{}->status, status::NONE);
    EXPECT_EQ(test_support::default_initialized<model::dl_queues::element>{}->status, status::NONE);
}

template <typename Record>
class RecordNumbersOf : public testing::Test {};

using RecordsWithNumbers =
    testing::Types<model::message, model::dl_message, model::hb_message, model::in_message,
                   model::dl_queues, model::dl_queues::queue, model::dl_queues::element,
                   model::dev_value, model::dev_event, model::filter_roll, model::filter_dl,
                   model::filter_eav>;
TYPED_TEST_SUITE(RecordNumbersOf, RecordsWithNumbers);

// A host writes "model::message message;" and sets what it has.
TYPED_TEST(RecordNumbersOf, ADefinitionWithoutAValueAreZero) {
    const test_support::default_initialized<TypeParam> record;
    std::apply(
        [&](const auto&... member) {
            const auto expectZero = [&](const auto& named) {
                const auto& value = (*record).*named.pointer;
                using type = std::remove_cvref_t<decltype(value)>;
                if constexpr (std::is_arithmetic_v<type> || std::is_enum_v<type>) {
                    EXPECT_EQ(value, type{}) << named.name;
                }
            };
            (expectZero(member), ...);
        },
        test_support::membersOf<TypeParam>);
}

} // namespace
