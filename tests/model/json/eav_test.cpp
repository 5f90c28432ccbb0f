#include "model/model_convertors.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/record_samples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QStringList>

namespace {

using model::dev_event;
using model::dev_value;
using model_convertors::toJson;
using namespace test_support;
using namespace test_support::literals;

std::string compact(const QJsonObject& json) {
    return QJsonDocument{json}.toJson(QJsonDocument::Compact).toStdString();
}

TEST(ValueToJson, WritesEveryKey) {
    EXPECT_EQ(compact(toJson(sampleValue())),
              R"({"message_id":"1badcafe","modem_id":1001,"obis_code":"1-0:1.8.0","tag":"energy",)"
              R"("timestamp":1700000004,"ttl":1900000000,"value":2.5})");
}

TEST(ValueToJson, WritesEveryKeyOfAnEmptyRecordToo) {
    dev_value empty;
    empty.ttl = empty.timestamp = utcSecs(0);

    EXPECT_EQ(compact(toJson(empty)),
              R"({"message_id":"","modem_id":0,"obis_code":"","tag":"","timestamp":0,"ttl":0,)"
              R"("value":null})");
}

// Deliberate: hosts ask for it separately.
TEST(ValueToJson, ExtendedDataIsNotWritten) {
    EXPECT_FALSE(toJson(sampleValue()).contains("extended_data"_q));
}

TEST(ValueToJson, TimesLoseTheirFractionDownwards) {
    dev_value value;
    value.timestamp = utcMsecs(1999);
    value.ttl = utcMsecs(4102444800999);

    EXPECT_EQ(toJson(value).value("timestamp"_q), 1);
    EXPECT_EQ(toJson(value).value("ttl"_q), QJsonValue{qint64{4102444800}});
}

struct value_case {
    const char* name = nullptr;
    QVariant value;
    const char* json = nullptr;

    friend void PrintTo(const value_case& value, std::ostream* out) { *out << value.name; }
};

class ValueToJsonValue : public testing::TestWithParam<value_case> {};

TEST_P(ValueToJsonValue, IsWrittenByItsKind) {
    dev_value value;
    value.value = GetParam().value;

    const QJsonObject written{{"value"_q, toJson(value).value("value"_q)}};
    EXPECT_EQ(compact(written), std::string{R"({"value":)"} + GetParam().json + "}");
}

INSTANTIATE_TEST_SUITE_P(
    Kind, ValueToJsonValue,
    testing::Values(
        value_case{"invalid", QVariant(), "null"}, value_case{"boolean", true, "true"},
        value_case{"int", -5, "-5"}, value_case{"unsigned_int", 4294967295U, "4294967295"},
        value_case{"long_long", qlonglong{4294967297}, "4294967297"},
        value_case{"real", -0.125, "-0.125"}, value_case{"whole_real", 3.0, "3"},
        value_case{"text", "\u0416 \"x\""_q, "\"\u0416 \\\"x\\\"\""},
        value_case{"text_that_reads_as_a_number", "42"_q, "\"42\""},
        value_case{"bytes_as_text", "abc"_qba, "\"abc\""},
        value_case{"date_time", utcMsecs(1700000000123), "\"2023-11-14T22:13:20.123Z\""},
        value_case{"list", QVariantList{1, "x"_q, QVariant()}, "[1,\"x\",null]"},
        value_case{"text_list", QStringList{"a"_q, "b"_q}, "[\"a\",\"b\"]"},
        value_case{"map", QVariantMap{{"a"_q, 1}, {"b"_q, QVariantList{}}}, "{\"a\":1,\"b\":[]}"},
        value_case{"json_object", QJsonObject{{"n"_q, 5}}, "{\"n\":5}"},
        value_case{"json_array", QJsonArray{5}, "[5]"},
        value_case{"json_null", QVariant::fromValue(nullptr), "null"}),
    [](const auto& info) { return std::string{info.param.name}; });

TEST(EventToJson, WritesEveryKey) {
    EXPECT_EQ(compact(toJson(sampleEvent())),
              R"({"event_code":404,"extended_data":{"e":true},"message":"cover opened",)"
              R"("message_id":"1badcafe","modem_id":1001,"parameter":12,"timestamp":1700000005,)"
              R"("ttl":1900000000})");
}

TEST(EventToJson, WritesEveryKeyOfAnEmptyRecordToo) {
    dev_event empty;
    empty.ttl = empty.timestamp = utcSecs(0);

    EXPECT_EQ(compact(toJson(empty)),
              R"({"event_code":0,"extended_data":null,"message":"","message_id":"","modem_id":0,)"
              R"("parameter":0,"timestamp":0,"ttl":0})");
}

TEST(EventToJson, ExtendedDataOfAnEmptyObjectIsAnEmptyObject) {
    dev_event event;
    event.extended_data = QJsonDocument{QJsonObject{}};

    EXPECT_EQ(toJson(event).value("extended_data"_q), QJsonValue{QJsonObject{}});
}

TEST(EventToJson, ExtendedDataOfAnArrayIsAnArray) {
    dev_event event;
    event.extended_data = QJsonDocument{QJsonArray{1}};

    EXPECT_EQ(toJson(event).value("extended_data"_q), QJsonValue{QJsonArray{1}});
}

TEST(EventToJson, ExtremeNumbersAreKept) {
    dev_event event;
    event.event_code = std::numeric_limits<int>::min();
    event.parameter = std::numeric_limits<int>::max();

    EXPECT_EQ(toJson(event).value("event_code"_q), -2147483647 - 1);
    EXPECT_EQ(toJson(event).value("parameter"_q), 2147483647);
}

TEST(EventToJson, TimesOfAnyZoneAreSecondsSinceTheEpoch) {
    dev_event event;
    event.timestamp = QDateTime{QDate{2023, 11, 15}, QTime{3, 43, 21}, Qt::OffsetFromUTC, 19800};

    EXPECT_EQ(toJson(event).value("timestamp"_q), 1700000001);
}

} // namespace
