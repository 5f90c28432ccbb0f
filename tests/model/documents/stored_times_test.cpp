// Instants at every limit of what the stores keep of them: "ttl" in signed 64-bit milliseconds, all
// others in an unsigned 32-bit count of seconds.

#include "model/bson_utils.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/raw_bson.h"
#include "tests/support/record_samples.h"
#include "tests/support/time_zone.h"

#include <bsoncxx/v1/types/view.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <ostream>
#include <string>

namespace {

using bson_utils::fromBsonUL;
using bson_utils::toBson;
using namespace test_support;
using namespace test_support::literals;
using namespace test_support::raw_bson;

struct stored_secs {
    const char* name;
    QDateTime time;
    std::int64_t secs;

    friend void PrintTo(const stored_secs& parameter, std::ostream* out) { *out << parameter.name; }
};

class StoredSeconds : public testing::TestWithParam<stored_secs> {};

std::int64_t int64Of(const bsoncxx::v1::document::value& document, const char* key) {
    return document.view()[key].get_int64().value;
}

TEST_P(StoredSeconds, OfAnUplink) {
    model::message message = sampleMessage();
    message.timestamp = GetParam().time;
    EXPECT_EQ(int64Of(toBson(message), "timestamp"), GetParam().secs);
    EXPECT_EQ(int64Of(toBson(message), "time_detected"), 1700000002);
    message = sampleMessage();
    message.time_detected = GetParam().time;
    EXPECT_EQ(int64Of(toBson(message), "time_detected"), GetParam().secs);
    EXPECT_EQ(int64Of(toBson(message), "timestamp"), 1700000001);
}

TEST_P(StoredSeconds, OfADownlink) {
    model::dl_message command = sampleCommand();
    command.timestamp = GetParam().time;
    EXPECT_EQ(int64Of(toBson(command), "timestamp"), GetParam().secs);
}

TEST_P(StoredSeconds, OfAValue) {
    model::dev_value value = sampleValue();
    value.timestamp = GetParam().time;
    EXPECT_EQ(int64Of(toBson(value), "timestamp"), GetParam().secs);
}

TEST_P(StoredSeconds, OfAnEvent) {
    model::dev_event event = sampleEvent();
    event.timestamp = GetParam().time;
    EXPECT_EQ(int64Of(toBson(event), "timestamp"), GetParam().secs);
}

INSTANTIATE_TEST_SUITE_P(
    Instants, StoredSeconds,
    testing::Values(
        stored_secs{"Null", QDateTime{}, 4294967295},
        stored_secs{"Invalid", QDateTime{QDate{2020, 2, 30}, QTime{1, 2}, Qt::UTC}, 4294967295},
        stored_secs{"Year1000", QDateTime{QDate{1000, 1, 1}, QTime{0, 0}, Qt::UTC}, 4294967295},
        stored_secs{"OneSecondBefore1970", utcMsecs(-1000), 4294967295},
        // The count is cut towards zero, so the last second before 1970 becomes 0.
        stored_secs{"LessThanASecondBefore1970", utcMsecs(-999), 0},
        stored_secs{"Epoch", utcMsecs(0), 0}, stored_secs{"CutsMilliseconds", utcMsecs(1999), 1},
        stored_secs{"LastOfSigned32Bits", utcSecs(2147483647), 2147483647},
        stored_secs{"FirstBeyondSigned32Bits", utcSecs(2147483648), 2147483648},
        stored_secs{"LastOfUnsigned32Bits", utcSecs(4294967294), 4294967294},
        stored_secs{"AllBitsSet", utcSecs(4294967295), 4294967295},
        // Qt's count does not wrap around here, it stays at its largest.
        stored_secs{"FirstBeyondUnsigned32Bits", utcSecs(4294967296), 4294967295},
        stored_secs{"FiveSecondsBeyond", utcSecs(4294967301), 4294967295},
        stored_secs{"Year3000", QDateTime{QDate{3000, 1, 1}, QTime{0, 0}, Qt::UTC}, 4294967295},
        stored_secs{"AheadOfUtc",
                    QDateTime{QDate{2020, 1, 1}, QTime{3, 0}, Qt::OffsetFromUTC, 3 * 3600},
                    1577836800}),
    [](const auto& test) { return std::string{test.param.name}; });

TEST(StoredSeconds, OfALocalTimeAreThoseOfItsInstant) {
    const local_time_zone halfPastFiveAhead{"XST-05:30"};
    model::dl_message command = sampleCommand();
    command.timestamp = QDateTime{QDate{2020, 1, 1}, QTime{5, 30}, Qt::LocalTime};
    EXPECT_EQ(int64Of(toBson(command), "timestamp"), 1577836800);
}

std::int64_t ttlOf(const bsoncxx::v1::document::value& document) {
    return document.view()["ttl"].get_date().value.count();
}

struct stored_msecs {
    const char* name;
    std::int64_t msecs;

    friend void PrintTo(const stored_msecs& parameter, std::ostream* out) {
        *out << parameter.name;
    }
};

class StoredTtl : public testing::TestWithParam<stored_msecs> {};

TEST_P(StoredTtl, KeepsItsMillisecondsInEveryRecord) {
    const QDateTime ttl = utcMsecs(GetParam().msecs);
    model::message message = sampleMessage();
    message.ttl = ttl;
    EXPECT_EQ(ttlOf(toBson(message)), GetParam().msecs);
    model::dl_message command = sampleCommand();
    command.ttl = ttl;
    EXPECT_EQ(ttlOf(toBson(command)), GetParam().msecs);
    model::dev_value value = sampleValue();
    value.ttl = ttl;
    EXPECT_EQ(ttlOf(toBson(value)), GetParam().msecs);
    model::dev_event event = sampleEvent();
    event.ttl = ttl;
    EXPECT_EQ(ttlOf(toBson(event)), GetParam().msecs);
}

TEST_P(StoredTtl, ComesBackAsTheSameInstant) {
    // Qt itself gives instants before 1970 in some zones' local time as others.
    const local_time_zone utc{"UTC0"};
    model::message message = sampleMessage();
    message.ttl = utcMsecs(GetParam().msecs);
    EXPECT_EQ(fromBsonUL(toBson(message).view()).ttl.toMSecsSinceEpoch(), GetParam().msecs);
}

INSTANTIATE_TEST_SUITE_P(Instants, StoredTtl,
                         testing::Values(stored_msecs{"Epoch", 0},
                                         stored_msecs{"OneMillisecondBefore1970", -1},
                                         stored_msecs{"Before1970", -86400123},
                                         stored_msecs{"Today", 1700000000123},
                                         stored_msecs{"After2038", 2147483648001},
                                         stored_msecs{"After2106", 4294967296001},
                                         stored_msecs{"Year9999", 253402300799999}),
                         [](const auto& test) { return std::string{test.param.name}; });

// A null date-time has no instant; Qt counts from midnight of 1970-01-01 in the local time zone.
TEST(StoredTtl, OfANullTimeIsQtsCountInTheLocalZone) {
    model::message message = sampleMessage();
    message.ttl = QDateTime{};
    const auto stored = [&](const char* zone) {
        const local_time_zone local{zone};
        return ttlOf(toBson(message));
    };
    EXPECT_EQ(stored("UTC0"), 0);
    EXPECT_EQ(stored("XST-05:30"), -19800000);
    EXPECT_EQ(stored("XST+08"), 28800000);
}

TEST(ReadTtl, IsALocalTime) {
    const local_time_zone halfPastFiveAhead{"XST-05:30"};
    const model::message read = fromBsonUL(toBson(sampleMessage()).view());
    EXPECT_EQ(read.ttl.timeSpec(), Qt::LocalTime);
    EXPECT_EQ(read.ttl, utcMsecs(1900000000123));
}

struct read_secs {
    const char* name;
    std::int64_t stored;
    std::int64_t read;

    friend void PrintTo(const read_secs& parameter, std::ostream* out) { *out << parameter.name; }
};

class ReadSeconds : public testing::TestWithParam<read_secs> {};

TEST_P(ReadSeconds, AreTheLow32BitsAsALocalTime) {
    const document_bytes document =
        doc(string("_id", "1"), int32("modem_id", 1), int32("station_id", 2), string("phy", ""),
            int32("rssi", 3), int32("snr", 4), int64("timestamp", GetParam().stored),
            int64("time_detected", GetParam().stored), int32("bs_timezone_offset", 5),
            string("tag", ""), string("hw_type", ""), string("protocol", ""),
            embedded("extended_data", doc()), embedded("data", doc()), string("payload", ""),
            string("parse_status", ""));
    const model::message message = fromBsonUL(document.view());
    EXPECT_EQ(message.timestamp, utcSecs(GetParam().read));
    EXPECT_EQ(message.timestamp.timeSpec(), Qt::LocalTime);
    EXPECT_EQ(message.time_detected, utcSecs(GetParam().read));
    EXPECT_EQ(message.time_detected.timeSpec(), Qt::LocalTime);
}

INSTANTIATE_TEST_SUITE_P(
    Values, ReadSeconds,
    testing::Values(read_secs{"Zero", 0, 0}, read_secs{"Today", 1700000001, 1700000001},
                    read_secs{"FirstBeyondSigned32Bits", 2147483648, 2147483648},
                    read_secs{"AllBitsSet", 4294967295, 4294967295},
                    read_secs{"TwoTo32", 4294967296, 0}, read_secs{"TwoTo32AndFive", 4294967301, 5},
                    read_secs{"MinusOne", -1, 4294967295},
                    read_secs{"MinusTwoTo32AndSeven", -4294967289, 7},
                    read_secs{"Smallest", std::numeric_limits<std::int64_t>::min(), 0},
                    read_secs{"Largest", std::numeric_limits<std::int64_t>::max(), 4294967295}),
    [](const auto& test) { return std::string{test.param.name}; });

// Deliberate: what was null, or before 1970, or after 2106 comes back as one and the same instant.
TEST(ReadSeconds, OfANullTimeAreTheLastInstantOfTheCount) {
    model::message message = sampleMessage();
    message.timestamp = QDateTime{};
    EXPECT_EQ(fromBsonUL(toBson(message).view()).timestamp,
              QDateTime(QDate{2106, 2, 7}, QTime{6, 28, 15}, Qt::UTC));
}

} // namespace
