#include "model/model_convertors.h"

#include "tests/model/json/json_reader_rows.h"
#include "tests/support/record_samples.h"
#include "tests/support/time_zone.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using json_rows::accessor;
using model::message;
using model_convertors::fromJson;
using model_convertors::toJson;
using namespace test_support;
using namespace test_support::literals;

QDateTime localSecs(qint64 secs) {
    return QDateTime::fromSecsSinceEpoch(secs, Qt::LocalTime);
}

message read(const char* key, const QJsonValue& value) {
    return fromJson<message>(json_rows::with(key, value));
}

using message_row = json_rows::row<message>;

// "hw_type" and "unique_id" have rules of their own below, but their rows are here too.
const std::vector<message_row> rows{
    {"unique_id", accessor::integer, 77, [](message& m) { m.unique_id = 77; }},
    {"ttl", accessor::integer, 1900000000, [](message& m) { m.ttl = localSecs(1900000000); }},
    {"timestamp", accessor::integer, 17, [](message& m) { m.timestamp = localSecs(17); }},
    {"time_detected", accessor::integer, -5, [](message& m) { m.time_detected = localSecs(-5); }},
    {"bs_timezone_offset", accessor::integer, -180,
     [](message& m) { m.bs_timezone_offset = -180; }},
    {"tag", accessor::text, "hourly"_q, [](message& m) { m.tag = "hourly"_q; }},
    {"station_id", accessor::integer, 2002, [](message& m) { m.station_id = 2002; }},
    {"snr", accessor::integer, -7, [](message& m) { m.snr = -7; }},
    {"rssi", accessor::integer, -112, [](message& m) { m.rssi = -112; }},
    {"protocol", accessor::text, "proto-9"_q, [](message& m) { m.protocol = "proto-9"_q; }},
    {"phy", accessor::text, "phy-868"_q, [](message& m) { m.phy = "phy-868"_q; }},
    {"parse_status", accessor::text, "ok"_q, [](message& m) { m.parse_status = "ok"_q; }},
    {"modem_id", accessor::integer, 2147483647, [](message& m) { m.modem_id = 2147483647; }},
    {"hw_type", accessor::integer, 65, [](message& m) { m.hw_type = "A"_q; }},
    {"extended_data", accessor::object, QJsonObject{{"e"_q, 1}},
     [](message& m) { m.extended_data = QJsonDocument{QJsonObject{{"e"_q, 1}}}; }},
    {"data", accessor::object, QJsonObject{{"n"_q, QJsonArray{2}}},
     [](message& m) { m.data = QJsonDocument{QJsonObject{{"n"_q, QJsonArray{2}}}}; }},
    {"payload", accessor::text, "0a"_q, [](message& m) { m.payload = "0a"_qba; }},
};

class MessageFromJson : public testing::TestWithParam<message_row> {};

TEST_P(MessageFromJson, ReadsTheKeyIntoItsMemberAlone) {
    json_rows::expectKeyReachesItsMemberAlone(GetParam());
}

TEST_P(MessageFromJson, TakesTheDefaultForAMistypedValue) {
    json_rows::expectMistypedValuesGiveTheDefault(GetParam());
}

TEST_P(MessageFromJson, IgnoresOtherSpellingsOfTheKey) {
    json_rows::expectOtherSpellingsAreIgnored(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Key, MessageFromJson, testing::ValuesIn(rows), json_rows::row_name{});

TEST(MessageFromJsonDefaults, AreZerosTheEpochAndEmptyTexts) {
    message expected;
    expected.ttl = expected.timestamp = expected.time_detected = localSecs(0);
    expected.data = expected.extended_data = QJsonDocument{QJsonObject{}};
    expected.hw_type = "\0"_q;

    EXPECT_EQ(fromJson<message>({}), expected);
}

TEST(MessageFromJsonDefaults, ExtraMembersAreNotRead) {
    const message read =
        fromJson<message>({{"extra_text"_q, "x"_q}, {"extra_value1"_q, 1}, {"extra_value2"_q, 2}});

    EXPECT_EQ(read, fromJson<message>({}));
}

TEST(MessageFromJsonDefaults, StorageKeyOfTheNumberIsNotRead) {
    EXPECT_EQ(read("_id", "4d"_q).unique_id, 0U);
}

TEST(MessageFromJsonUniqueId, BeyondTheRangeOfIntIsZero) {
    EXPECT_EQ(read("unique_id", 4294967296.0).unique_id, 0U);
}

TEST(MessageFromJsonUniqueId, NegativeNumberIsSignExtended) {
    EXPECT_EQ(read("unique_id", -1).unique_id, 18446744073709551615U);
}

TEST(MessageFromJsonUniqueId, SmallestIntIsSignExtended) {
    EXPECT_EQ(read("unique_id", std::numeric_limits<int>::min()).unique_id, 0xffffffff80000000U);
}

TEST(MessageFromJsonUniqueId, LargestIntIsKept) {
    EXPECT_EQ(read("unique_id", std::numeric_limits<int>::max()).unique_id, 2147483647U);
}

// Deliberate: what toJson writes is read back only within 32 bits.
TEST(MessageFromJsonUniqueId, LargeNumberDoesNotComeBackFromItsOwnJson) {
    message large;
    large.unique_id = 0x100000000;

    EXPECT_EQ(fromJson<message>(toJson(large)).unique_id, 0U);
}

TEST(MessageFromJsonNumbers, WholeNumberWrittenWithAFractionIsWhole) {
    const QJsonObject json = QJsonDocument::fromJson(R"({"snr": 5.0, "rssi": 1e2})").object();

    EXPECT_EQ(fromJson<message>(json).snr, 5);
    EXPECT_EQ(fromJson<message>(json).rssi, 100);
}

struct hw_type_case {
    const char* name = nullptr;
    QJsonValue given;
    char16_t character = 0;

    friend void PrintTo(const hw_type_case& hwType, std::ostream* out) { *out << hwType.name; }
};

class MessageFromJsonHwType : public testing::TestWithParam<hw_type_case> {};

// Deliberate: a number in JSON, one character in the record.
TEST_P(MessageFromJsonHwType, IsOneCharacterOfTheLowByte) {
    EXPECT_EQ(read("hw_type", GetParam().given).hw_type, QString(QChar(GetParam().character)));
}

INSTANTIATE_TEST_SUITE_P(Number, MessageFromJsonHwType,
                         testing::Values(hw_type_case{"letter", 65, u'A'},
                                         hw_type_case{"above_a_byte", 321, u'A'},
                                         hw_type_case{"exactly_a_byte_more", 256, u'\0'},
                                         hw_type_case{"upper_half", 233, u'\u00e9'},
                                         hw_type_case{"largest_byte", 255, u'\u00ff'},
                                         hw_type_case{"negative", -1, u'\u00ff'},
                                         hw_type_case{"text", "65"_q, u'\0'},
                                         hw_type_case{"fraction", 65.5, u'\0'}),
                         [](const auto& info) { return std::string{info.param.name}; });

TEST(MessageFromJsonDefaults, HwTypeIsOneCharacterOfCodeZero) {
    EXPECT_EQ(fromJson<message>({}).hw_type.size(), 1);
    EXPECT_EQ(fromJson<message>({}).hw_type.at(0), QChar(0));
}

// Deliberate: toJson writes hexadecimal.
TEST(MessageFromJsonPayload, IsTheTextAsItStands) {
    EXPECT_EQ(read("payload", "0a"_q).payload, "0a"_qba);
}

TEST(MessageFromJsonPayload, IsLatin1) {
    EXPECT_EQ(read("payload", "\u00e9\u00ff"_q).payload, "\xe9\xff"_qba);
}

TEST(MessageFromJsonPayload, HasAQuestionMarkForACharacterBeyondLatin1) {
    EXPECT_EQ(read("payload", "a\u0416b"_q).payload, "a?b"_qba);
}

TEST(MessageFromJsonPayload, KeepsAZeroCharacter) {
    EXPECT_EQ(read("payload", "a\0b"_q).payload, "a\0b"_qba);
}

// Deliberate: heartbeats and incoming messages have UTC.
TEST(MessageFromJsonTimes, AreInLocalTime) {
    const local_time_zone zone{"XST-05:30"};
    const message message = fromJson<model::message>(
        {{"ttl"_q, 1700000001}, {"timestamp"_q, 1700000002}, {"time_detected"_q, 1700000003}});

    EXPECT_EQ(message.ttl, localSecs(1700000001));
    EXPECT_EQ(message.ttl.timeSpec(), Qt::LocalTime);
    EXPECT_EQ(message.ttl.toString(Qt::ISODate), "2023-11-15T03:43:21"_q);
    EXPECT_EQ(message.timestamp.timeSpec(), Qt::LocalTime);
    EXPECT_EQ(message.timestamp.toSecsSinceEpoch(), 1700000002);
    EXPECT_EQ(message.time_detected.timeSpec(), Qt::LocalTime);
    EXPECT_EQ(message.time_detected.toSecsSinceEpoch(), 1700000003);
}

TEST(MessageFromJsonTimes, OfThe32BitRangeAreKept) {
    EXPECT_EQ(read("ttl", 2147483647).ttl.toSecsSinceEpoch(), 2147483647);
    EXPECT_EQ(read("ttl", -2147483647 - 1).ttl.toSecsSinceEpoch(), -2147483648);
}

TEST(MessageFromJsonTimes, AfterThe32BitRangeAreTheEpoch) {
    EXPECT_EQ(read("ttl", 2147483648.0).ttl.toSecsSinceEpoch(), 0);
}

TEST(MessageFromJsonContent, IsADocumentOfTheObject) {
    const QJsonObject content{{"deep"_q, QJsonObject{{"list"_q, QJsonArray{1, "x"_q, true}}}}};

    EXPECT_EQ(read("data", content).data.object(), content);
    EXPECT_EQ(read("extended_data", content).extended_data.object(), content);
}

TEST(MessageFromJsonContent, MissingIsADocumentOfTheEmptyObject) {
    EXPECT_TRUE(fromJson<message>({}).data.isObject());
    EXPECT_TRUE(fromJson<message>({}).extended_data.isObject());
}

std::string compact(const QJsonObject& json) {
    return QJsonDocument{json}.toJson(QJsonDocument::Compact).toStdString();
}

TEST(MessageToJson, WritesEveryKey) {
    EXPECT_EQ(compact(toJson(sampleMessage())),
              R"({"bs_timezone_offset":180,"data":{"n":5},"extended_data":{"e":"x"},)"
              R"("hw_type":"meter-3","modem_id":1001,"parse_status":"ok","payload":"01ab",)"
              R"("phy":"phy-868","protocol":"proto-9","rssi":-112,"snr":-7,"station_id":2002,)"
              R"("tag":"hourly","time_detected":1700000002,"timestamp":1700000001,)"
              R"("ttl":1900000000,"unique_id":464374526})");
}

TEST(MessageToJson, WritesEveryKeyOfAnEmptyRecordToo) {
    message empty;
    empty.ttl = empty.timestamp = empty.time_detected = utcSecs(0);

    EXPECT_EQ(compact(toJson(empty)),
              R"({"bs_timezone_offset":0,"data":null,"extended_data":null,"hw_type":"",)"
              R"("modem_id":0,"parse_status":"","payload":"","phy":"","protocol":"","rssi":0,)"
              R"("snr":0,"station_id":0,"tag":"","time_detected":0,"timestamp":0,"ttl":0,)"
              R"("unique_id":0})");
}

// Beyond that Qt's objects hold the nearest double.
TEST(MessageToJson, UniqueIdIsExactUpTo53Bits) {
    message message;
    message.unique_id = 9007199254740991;

    EXPECT_EQ(toJson(message).value("unique_id"_q).toVariant(),
              QVariant(qlonglong{9007199254740991}));
}

TEST(MessageToJson, UniqueIdAbove63BitsIsTheNegativeNumberOfTheSameBits) {
    message message;
    message.unique_id = 0xfffffffffffffff6;

    EXPECT_EQ(toJson(message).value("unique_id"_q).toVariant(), QVariant(qlonglong{-10}));
}

TEST(MessageToJson, TimesLoseTheirFractionDownwards) {
    message message;
    message.ttl = utcMsecs(1999);
    message.timestamp = utcMsecs(253402300799999);
    message.time_detected = utcSecs(-2);

    EXPECT_EQ(toJson(message).value("ttl"_q), 1);
    EXPECT_EQ(toJson(message).value("timestamp"_q), QJsonValue{qint64{253402300799}});
    EXPECT_EQ(toJson(message).value("time_detected"_q), -2);
}

TEST(MessageToJson, TimesOfAnyZoneAreSecondsSinceTheEpoch) {
    message message;
    message.ttl = QDateTime{QDate{2023, 11, 15}, QTime{3, 43, 21}, Qt::OffsetFromUTC, 19800};

    EXPECT_EQ(toJson(message).value("ttl"_q), 1700000001);
}

TEST(MessageToJson, PayloadIsLowercaseHexadecimal) {
    message message;
    message.payload = "\x00\x0f\xAB\xff"_qba;

    EXPECT_EQ(toJson(message).value("payload"_q), "000fabff"_q);
}

TEST(MessageToJson, ContentOfAnEmptyObjectIsAnEmptyObject) {
    message message;
    message.data = QJsonDocument{QJsonObject{}};

    EXPECT_EQ(toJson(message).value("data"_q), QJsonValue{QJsonObject{}});
}

TEST(MessageToJson, ContentOfAnArrayIsAnArray) {
    message message;
    message.data = QJsonDocument{QJsonArray{1, "x"_q}};

    EXPECT_EQ(toJson(message).value("data"_q), QJsonValue(QJsonArray{1, "x"_q}));
}

TEST(MessageToJson, ContentOfNoDocumentIsNull) {
    EXPECT_TRUE(toJson(message{}).value("data"_q).isNull());
    EXPECT_TRUE(toJson(message{}).contains("data"_q));
}

TEST(MessageToJson, ContentKeepsItsNullsAndNesting) {
    message message;
    message.data = QJsonDocument::fromJson(R"({"a":{"b":[null,{"c":2.5}]},"d":false})");

    EXPECT_EQ(toJson(message).value("data"_q), QJsonValue{message.data.object()});
}

TEST(MessageToJson, ExtraMembersAreNotWritten) {
    message plain = sampleMessage();
    plain.extra_text.clear();
    plain.extra_value1 = plain.extra_value2 = 0;

    EXPECT_EQ(toJson(sampleMessage()), toJson(plain));
}

TEST(MessageToJson, TextsKeepEveryCharacter) {
    message message;
    message.tag = "\u0416\U0001F50C\n\"\\ \0z"_q;

    EXPECT_EQ(toJson(message).value("tag"_q), message.tag);
}

TEST(MessageToJson, ComesBackButForThePayloadTheTypeAndTheExtras) {
    message expected = sampleMessage();
    expected.extra_text.clear();
    expected.extra_value1 = expected.extra_value2 = 0;
    expected.ttl = utcSecs(1900000000);
    expected.hw_type = "\0"_q;
    expected.payload = "01ab"_qba;

    EXPECT_EQ(
        differences(fromJson<message>(toJson(sampleMessage())), expected, date_times::byInstant),
        "");
}

} // namespace
