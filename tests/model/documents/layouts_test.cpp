// The stored documents, byte for byte. What is pinned here lies in databases in the field: a change
// that breaks one of these tests breaks those.

#include "model/bson_utils.h"
#include "tests/support/log_capture.h"
#include "tests/support/qt_literals.h"
#include "tests/support/raw_bson.h"
#include "tests/support/record_samples.h"
#include "tests/support/time_zone.h"

#include <bsoncxx/v1/types/view.hpp>

#include <bsoncxx/v1/exception.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <QMetaType>
#include <QStringList>

#include <limits>
#include <ostream>
#include <string>

namespace {
struct first_own_type {};
struct second_own_type {};
} // namespace
Q_DECLARE_METATYPE(first_own_type)
Q_DECLARE_METATYPE(second_own_type)

namespace {

using bson_utils::toBson;
using namespace test_support;
using namespace test_support::literals;
using namespace test_support::raw_bson;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

/// Seconds of a null date-time: Qt's unsigned count, all bits set.
constexpr std::int64_t nullSecs = 4294967295;

// Uplink messages

/// The elements around those that a test is about, which must be 17 in all.
document_bytes uplink(const element_bytes& id, const element_bytes& data,
                      const element_bytes& payload) {
    return doc(id, int32("modem_id", 1001), int32("station_id", 2002), string("phy", "phy-868"),
               int32("rssi", -112), int32("snr", -7), date("ttl", 1900000000123),
               int64("timestamp", 1700000001), int64("time_detected", 1700000002),
               int32("bs_timezone_offset", 180), string("tag", "hourly"),
               string("hw_type", "meter-3"), string("protocol", "proto-9"),
               embedded("extended_data", doc(string("e", "x"))), data, payload,
               string("parse_status", "ok"));
}

const element_bytes sampleId = string("_id", "1badcafe");
const element_bytes sampleData = embedded("data", doc(int32("n", 5)));
const element_bytes samplePayload = string("payload", "01ab");

TEST(UlMessagesLayout, HoldsSeventeenFieldsInOrder) {
    EXPECT_EQ(rawBson(toBson(sampleMessage())), uplink(sampleId, sampleData, samplePayload));
}

TEST(UlMessagesLayout, WritesEveryFieldOfADefaultMessage) {
    const local_time_zone utc{"UTC0"};
    EXPECT_EQ(rawBson(toBson(model::message{})),
              doc(string("_id", "0"), int32("modem_id", 0), int32("station_id", 0),
                  string("phy", ""), int32("rssi", 0), int32("snr", 0), date("ttl", 0),
                  int64("timestamp", nullSecs), int64("time_detected", nullSecs),
                  int32("bs_timezone_offset", 0), string("tag", ""), string("hw_type", ""),
                  string("protocol", ""), embedded("extended_data", doc()), embedded("data", doc()),
                  string("payload", ""), string("parse_status", "")));
}

TEST(UlMessagesLayout, LeavesTheHostsOwnMembersOut) {
    model::message other = sampleMessage();
    other.extra_text = "another"_q;
    other.extra_value1 = -1;
    other.extra_value2 = std::numeric_limits<qint64>::max();
    EXPECT_EQ(rawBson(toBson(other)), rawBson(toBson(sampleMessage())));
}

struct id_text {
    quint64 id;
    const char* text;

    friend void PrintTo(const id_text& parameter, std::ostream* out) { *out << parameter.text; }
};

class UlMessagesId : public testing::TestWithParam<id_text> {};

TEST_P(UlMessagesId, IsLowercaseHexadecimalWithoutPadding) {
    model::message message = sampleMessage();
    message.unique_id = GetParam().id;
    EXPECT_EQ(rawBson(toBson(message)),
              uplink(string("_id", GetParam().text), sampleData, samplePayload));
}

INSTANTIATE_TEST_SUITE_P(Values, UlMessagesId,
                         testing::Values(id_text{0, "0"}, id_text{9, "9"}, id_text{10, "a"},
                                         id_text{255, "ff"}, id_text{256, "100"},
                                         id_text{0x7fffffffffffffff, "7fffffffffffffff"},
                                         id_text{0x8000000000000000, "8000000000000000"},
                                         id_text{0xffffffffffffffff, "ffffffffffffffff"}),
                         [](const auto& test) { return std::string{"Is_"} + test.param.text; });

TEST(UlMessagesLayout, WritesIntegersAtTheirLimits) {
    constexpr int smallest = std::numeric_limits<int>::min();
    constexpr int largest = std::numeric_limits<int>::max();
    model::message message = sampleMessage();
    message.modem_id = smallest;
    message.station_id = largest;
    message.rssi = smallest;
    message.snr = largest;
    message.bs_timezone_offset = smallest;
    EXPECT_EQ(rawBson(toBson(message)),
              doc(sampleId, int32("modem_id", smallest), int32("station_id", largest),
                  string("phy", "phy-868"), int32("rssi", smallest), int32("snr", largest),
                  date("ttl", 1900000000123), int64("timestamp", 1700000001),
                  int64("time_detected", 1700000002), int32("bs_timezone_offset", smallest),
                  string("tag", "hourly"), string("hw_type", "meter-3"),
                  string("protocol", "proto-9"), embedded("extended_data", doc(string("e", "x"))),
                  sampleData, samplePayload, string("parse_status", "ok")));
}

TEST(UlMessagesLayout, WritesTextsAsUtf8WithTheirZeros) {
    model::message message = sampleMessage();
    message.phy = "\xd0\xba"_q;
    message.tag = "\xf0\x9f\x98\x80"_q;
    message.hw_type = "a\0b"_q;
    message.protocol = QString{QChar{0xD800}};
    message.parse_status = ""_q;
    EXPECT_EQ(rawBson(toBson(message)),
              doc(sampleId, int32("modem_id", 1001), int32("station_id", 2002),
                  string("phy", "\xd0\xba"), int32("rssi", -112), int32("snr", -7),
                  date("ttl", 1900000000123), int64("timestamp", 1700000001),
                  int64("time_detected", 1700000002), int32("bs_timezone_offset", 180),
                  string("tag", "\xf0\x9f\x98\x80"), string("hw_type", "a\0b"s),
                  string("protocol", "?"), embedded("extended_data", doc(string("e", "x"))),
                  sampleData, samplePayload, string("parse_status", "")));
}

TEST(UlMessagesLayout, WritesEveryPayloadByteAsTwoLowercaseDigits) {
    model::message message = sampleMessage();
    message.payload = "\x00\x09\x0a\x7f\x80\xff"_qba;
    EXPECT_EQ(rawBson(toBson(message)),
              uplink(sampleId, sampleData, string("payload", "00090a7f80ff")));
}

TEST(UlMessagesLayout, TypesTheNumbersOfDataByTheirText) {
    model::message message = sampleMessage();
    message.data = QJsonDocument{QJsonObject{{"a"_q, 5},
                                             {"b"_q, 2.5},
                                             {"c"_q, qint64{1} << 40},
                                             {"d"_q, QJsonValue{QJsonValue::Null}},
                                             {"e"_q, QJsonObject{{"$date"_q, 7}}}}};
    EXPECT_EQ(rawBson(toBson(message)),
              uplink(sampleId,
                     embedded("data", doc(int32("a", 5), number("b", 2.5),
                                          int64("c", 1099511627776), null("d"), date("e", 7))),
                     samplePayload));
}

TEST(UlMessagesLayout, WritesAnArrayInDataAsADocument) {
    model::message message = sampleMessage();
    message.data = QJsonDocument{QJsonArray{1, "x"_q}};
    EXPECT_EQ(
        rawBson(toBson(message)),
        uplink(sampleId, embedded("data", doc(int32("0", 1), string("1", "x"))), samplePayload));
}

TEST(UlMessagesLayout, WritesANullAndAnEmptyDocumentAlike) {
    model::message message = sampleMessage();
    for (const QJsonDocument& empty :
         {QJsonDocument{}, QJsonDocument{QJsonObject{}}, QJsonDocument{QJsonArray{}}}) {
        message.data = empty;
        EXPECT_EQ(rawBson(toBson(message)),
                  uplink(sampleId, embedded("data", doc()), samplePayload));
    }
}

TEST(UlMessagesLayout, ThrowsOnDataThatTheJsonReaderRejects) {
    model::message message = sampleMessage();
    message.data = QJsonDocument{QJsonObject{{"a"_q, QJsonObject{{"$oid"_q, 5}}}}};
    EXPECT_THROW(toBson(message), bsoncxx::v1::exception);
    message = sampleMessage();
    message.extended_data = QJsonDocument{QJsonObject{{"a\0b"_q, 5}}};
    EXPECT_THROW(toBson(message), bsoncxx::v1::exception);
}

// Downlink commands

document_bytes downlink(const element_bytes& data, const element_bytes& status) {
    return doc(int32("modem_id", 1001), string("api_key", "key-42"), data, status,
               int32("timeout", 3600), int32("f_ack", 1), string("payload", "deadbeef"),
               date("ttl", 1900000000456), int64("timestamp", 1700000003));
}

TEST(DlMessagesLayout, HoldsNineFieldsInOrder) {
    EXPECT_EQ(rawBson(toBson(sampleCommand())),
              downlink(embedded("data", doc(number("n", 5.0))), int32("status", 2)));
}

TEST(DlMessagesLayout, WritesEveryFieldOfADefaultCommand) {
    const local_time_zone utc{"UTC0"};
    EXPECT_EQ(rawBson(toBson(model::dl_message{})),
              doc(int32("modem_id", 0), string("api_key", ""), embedded("data", doc()),
                  int32("status", 0), int32("timeout", 0), int32("f_ack", 0), string("payload", ""),
                  date("ttl", 0), int64("timestamp", nullSecs)));
}

TEST(DlMessagesLayout, LeavesTheIdentifierAndTheHostsTextOut) {
    model::dl_message other = sampleCommand();
    other.db_id = "0123456789abcdef01234567"_q;
    other.extra_text = "another"_q;
    EXPECT_EQ(rawBson(toBson(other)), rawBson(toBson(sampleCommand())));
}

TEST(DlMessagesLayout, MakesEveryNumberOfDataADoubleAndDropsNulls) {
    model::dl_message command = sampleCommand();
    command.data = QJsonObject{{"n"_q, 5},
                               {"m"_q, QJsonValue{QJsonValue::Null}},
                               {"l"_q, QJsonArray{1, QJsonValue{QJsonValue::Null}, "x"_q}},
                               {"d"_q, QJsonObject{{"$date"_q, 7}}}};
    EXPECT_EQ(rawBson(toBson(command)),
              downlink(embedded("data", doc(embedded("d", doc(number("$date", 7.0))),
                                            array("l", doc(number("0", 1.0), string("1", "x"))),
                                            number("n", 5.0))),
                       int32("status", 2)));
}

TEST(DlMessagesLayout, WritesTheStatusAsItsNumber) {
    using status = model::dl_message::dl_status;
    model::dl_message command = sampleCommand();
    const element_bytes data = embedded("data", doc(number("n", 5.0)));
    command.status = status::PENDING;
    EXPECT_EQ(rawBson(toBson(command)), downlink(data, int32("status", 0)));
    command.status = status::WAIT_DATA;
    EXPECT_EQ(rawBson(toBson(command)), downlink(data, int32("status", 1)));
    command.status = status::TIMEOUT;
    EXPECT_EQ(rawBson(toBson(command)), downlink(data, int32("status", 3)));
}

TEST(DlMessagesLayout, WritesAStatusWithoutANameAllTheSame) {
    model::dl_message command = sampleCommand();
    command.status = static_cast<model::dl_message::dl_status>(-7);
    EXPECT_EQ(rawBson(toBson(command)),
              downlink(embedded("data", doc(number("n", 5.0))), int32("status", -7)));
}

TEST(DlMessagesLayout, ThrowsOnDataWithAZeroInAKey) {
    model::dl_message command = sampleCommand();
    command.data = QJsonObject{{"a\0b"_q, 5}};
    EXPECT_THROW(toBson(command), bsoncxx::v1::exception);
}

// The same content, two stores, two types: readers in the field know either.
TEST(Layouts, TypeTheSameNumberDifferentlyInUplinksAndDownlinks) {
    EXPECT_EQ(rawBson(toBson(sampleCommand()).view()["data"].get_document().value),
              doc(number("n", 5.0)));
    EXPECT_EQ(rawBson(toBson(sampleMessage()).view()["data"].get_document().value),
              doc(int32("n", 5)));
}

// Values

document_bytes reading(const element_bytes& type, const element_bytes& value) {
    return doc(int32("modem_id", 1001), string("message_id", "1badcafe"),
               int64("timestamp", 1700000004), string("tag", "energy"),
               string("obis_code", "1-0:1.8.0"), type,
               embedded("extended_data", doc(int32("e", 7))), date("ttl", 1900000000789), value);
}

TEST(EavValuesLayout, HoldsNineFieldsInOrder) {
    EXPECT_EQ(rawBson(toBson(sampleValue())), reading(int64("val_type", 6), number("value", 2.5)));
}

TEST(EavValuesLayout, WritesEveryFieldOfADefaultValue) {
    const local_time_zone utc{"UTC0"};
    EXPECT_EQ(rawBson(toBson(model::dev_value{})),
              doc(int32("modem_id", 0), string("message_id", ""), int64("timestamp", nullSecs),
                  string("tag", ""), string("obis_code", ""), int64("val_type", 0),
                  embedded("extended_data", doc()), date("ttl", 0),
                  string("value", "invalid type")));
}

struct stored_value {
    const char* name;
    QVariant value;
    std::int64_t type;
    element_bytes element;

    friend void PrintTo(const stored_value& parameter, std::ostream* out) {
        *out << parameter.name;
    }
};

class EavValuesType : public testing::TestWithParam<stored_value> {};

TEST_P(EavValuesType, IsTheVariantsOwnBesideTheStoredValue) {
    const log_capture log;
    model::dev_value value = sampleValue();
    value.value = GetParam().value;
    EXPECT_EQ(rawBson(toBson(value)),
              reading(int64("val_type", GetParam().type), GetParam().element));
}

const element_bytes unknown = string("value", "unknown type");

INSTANTIATE_TEST_SUITE_P(
    Kinds, EavValuesType,
    testing::Values(stored_value{"Invalid", QVariant{}, 0, string("value", "invalid type")},
                    stored_value{"Bool", true, 1, boolean("value", true)},
                    stored_value{"Int", -5, 2, int32("value", -5)},
                    stored_value{"UInt", 4294967295U, 3, int32("value", -1)},
                    stored_value{"LongLong", qlonglong{1} << 40, 4, int32("value", 0)},
                    stored_value{"ULongLong", qulonglong{5}, 5, unknown},
                    stored_value{"Double", 2.5, 6, number("value", 2.5)},
                    stored_value{"Char", QChar{u'x'}, 7, unknown},
                    stored_value{"Map", QVariantMap{}, 8, unknown},
                    stored_value{"List", QVariantList{}, 9, unknown},
                    stored_value{"String", "x"_q, 10, string("value", "x")},
                    stored_value{"StringList", QStringList{"x"_q}, 11, unknown},
                    stored_value{"ByteArray", "\x01"_qba, 12, unknown},
                    stored_value{"DateTime", utcSecs(0), 16, unknown},
                    stored_value{"Float", 1.5F, 38, unknown},
                    stored_value{"JsonValue", QJsonValue{5}, 45, unknown},
                    stored_value{"JsonObject", QJsonObject{}, 46, unknown},
                    stored_value{"UserType", QVariant::fromValue(static_cast<void*>(nullptr)), 31,
                                 unknown}),
    [](const auto& test) { return std::string{test.param.name}; });

// The numbers that Qt gives to registered types differ from run to run; none of them is stored.
TEST(EavValuesLayout, StoresOneTypeNumberForAllTypesOfTheHost) {
    const log_capture log;
    model::dev_value value = sampleValue();
    for (const QVariant& own :
         {QVariant::fromValue(first_own_type{}), QVariant::fromValue(second_own_type{})}) {
        value.value = own;
        EXPECT_EQ(rawBson(toBson(value)), reading(int64("val_type", 1024), unknown));
    }
}

TEST(EavValuesLayout, LogsOneLineForAValueThatItCannotHold) {
    model::dev_value value = sampleValue();
    value.value = "\x01\xab"_qba;
    const log_capture log;
    toBson(value);
    EXPECT_THAT(log.lines(), ElementsAre(debugLine(
                                 "toBson() failed to convert qvariant "
                                 "QVariant(QByteArray, \"\\x01\\xAB\") with type QByteArray"_q)));
}

TEST(EavValuesLayout, LogsNothingForAValueThatItHolds) {
    const log_capture log;
    toBson(sampleValue());
    EXPECT_THAT(log.lines(), IsEmpty());
}

// Events

document_bytes event(const element_bytes& extendedData) {
    return doc(int32("modem_id", 1001), int64("timestamp", 1700000005),
               string("message_id", "1badcafe"), int32("event_code", 404),
               string("message", "cover opened"), int32("parameter", 12), extendedData,
               date("ttl", 1900000000987));
}

TEST(EavEventsLayout, HoldsEightFieldsInOrder) {
    EXPECT_EQ(rawBson(toBson(sampleEvent())),
              event(embedded("extended_data", doc(boolean("e", true)))));
}

TEST(EavEventsLayout, WritesEveryFieldOfADefaultEvent) {
    const local_time_zone utc{"UTC0"};
    EXPECT_EQ(rawBson(toBson(model::dev_event{})),
              doc(int32("modem_id", 0), int64("timestamp", nullSecs), string("message_id", ""),
                  int32("event_code", 0), string("message", ""), int32("parameter", 0),
                  embedded("extended_data", doc()), date("ttl", 0)));
}

TEST(EavEventsLayout, KeepsNullsAndTypesNumbersOfExtendedData) {
    model::dev_event record = sampleEvent();
    record.extended_data =
        QJsonDocument{QJsonObject{{"a"_q, 1}, {"b"_q, QJsonValue{QJsonValue::Null}}, {"c"_q, 0.5}}};
    EXPECT_EQ(rawBson(toBson(record)),
              event(embedded("extended_data", doc(int32("a", 1), null("b"), number("c", 0.5)))));
}

TEST(EavEventsLayout, ThrowsOnExtendedDataThatTheJsonReaderRejects) {
    model::dev_event record = sampleEvent();
    record.extended_data = QJsonDocument{QJsonObject{{"a"_q, QJsonObject{{"$date"_q, "x"_q}}}}};
    EXPECT_THROW(toBson(record), bsoncxx::v1::exception);
}

} // namespace
