#include "model/model_convertors.h"

#include "tests/model/json/changed_locale_codec.h"
#include "tests/model/json/json_reader_rows.h"
#include "tests/support/record_samples.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace {

using json_rows::accessor;
using model::dl_message;
using model_convertors::fromJson;
using model_convertors::toJson;
using namespace test_support;
using namespace test_support::literals;

dl_message read(const char* key, const QJsonValue& value) {
    return fromJson<dl_message>(json_rows::with(key, value));
}

std::string compact(const QJsonObject& json) {
    return QJsonDocument{json}.toJson(QJsonDocument::Compact).toStdString();
}

using command_row = json_rows::row<dl_message>;

const std::vector<command_row> rows{
    {"f_ack", accessor::integer, 1, [](dl_message& m) { m.f_ack = 1; }},
    {"modem_id", accessor::integer, -1001, [](dl_message& m) { m.modem_id = -1001; }},
    {"timeout", accessor::integer, 3600, [](dl_message& m) { m.timeout = 3600; }},
    {"status", accessor::integer, 2,
     [](dl_message& m) { m.status = dl_message::dl_status::EXECUTED; }},
    {"data", accessor::object, QJsonObject{{"relay"_q, 2}},
     [](dl_message& m) { m.data = QJsonObject{{"relay"_q, 2}}; }},
    {"api_key", accessor::text, "key-5"_q, [](dl_message& m) { m.api_key = "key-5"_q; }},
    {"payload", accessor::text, "0a0bff"_q, [](dl_message& m) { m.payload = "\x0a\x0b\xff"_qba; }},
};

class CommandFromJson : public testing::TestWithParam<command_row> {};

TEST_P(CommandFromJson, ReadsTheKeyIntoItsMemberAlone) {
    json_rows::expectKeyReachesItsMemberAlone(GetParam());
}

TEST_P(CommandFromJson, TakesTheDefaultForAMistypedValue) {
    json_rows::expectMistypedValuesGiveTheDefault(GetParam());
}

TEST_P(CommandFromJson, IgnoresOtherSpellingsOfTheKey) {
    json_rows::expectOtherSpellingsAreIgnored(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Key, CommandFromJson, testing::ValuesIn(rows), json_rows::row_name{});

TEST(CommandFromJsonDefaults, ArePendingAndEmpty) {
    dl_message expected;
    expected.status = dl_message::dl_status::PENDING;

    EXPECT_EQ(json_rows::read<dl_message>({}), expected);
}

TEST(CommandFromJsonDefaults, WhatTheStoreGivesIsNotRead) {
    const dl_message message = fromJson<dl_message>(
        {{"ttl"_q, 1700000001}, {"db_id"_q, "5f"_q}, {"extra_text"_q, "x"_q}, {"_id"_q, "5f"_q}});

    EXPECT_TRUE(message.ttl.isNull());
    EXPECT_TRUE(message.db_id.isEmpty());
    EXPECT_TRUE(message.extra_text.isEmpty());
}

class CommandFromJsonStatus : public testing::TestWithParam<int> {};

TEST_P(CommandFromJsonStatus, IsTheEnumeratorOfTheNumber) {
    EXPECT_EQ(static_cast<int>(read("status", GetParam()).status), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Known, CommandFromJsonStatus, testing::Values(0, 1, 2, 3));
INSTANTIATE_TEST_SUITE_P(Unknown, CommandFromJsonStatus, testing::Values(-1, 4, 2147483647));

// Deliberate: written under "dl_status" by name, read from "status" as a number.
TEST(CommandFromJsonStatusName, IsNotRead) {
    const QJsonObject json{{"dl_status"_q, "EXECUTED"_q}, {"status"_q, "EXECUTED"_q}};

    EXPECT_EQ(fromJson<dl_message>(json).status, dl_message::dl_status::PENDING);
}

TEST(CommandFromJsonTimestamp, IsNowInUtc) {
    const QDateTime before = QDateTime::currentDateTimeUtc();
    const QDateTime timestamp = fromJson<dl_message>({}).timestamp;

    EXPECT_EQ(timestamp.timeSpec(), Qt::UTC);
    EXPECT_GE(timestamp, before);
    EXPECT_LE(timestamp, QDateTime::currentDateTimeUtc());
}

TEST(CommandFromJsonTimestamp, IsNowWhateverTheObjectHolds) {
    const QDateTime before = QDateTime::currentDateTimeUtc();

    EXPECT_GE(read("timestamp", 17).timestamp, before);
    EXPECT_LE(read("timestamp", 2147483647).timestamp, QDateTime::currentDateTimeUtc());
}

struct hex_case {
    const char* name = nullptr;
    QString text;
    QByteArray bytes;

    friend void PrintTo(const hex_case& hex, std::ostream* out) { *out << hex.name; }
};

class CommandFromJsonPayload : public testing::TestWithParam<hex_case> {};

TEST_P(CommandFromJsonPayload, IsDecodedFromHexadecimal) {
    EXPECT_EQ(read("payload", GetParam().text).payload, GetParam().bytes);
}

INSTANTIATE_TEST_SUITE_P(
    Text, CommandFromJsonPayload,
    testing::Values(hex_case{"one_byte", "0a"_q, "\x0a"_qba},
                    hex_case{"uppercase", "DEadBEef"_q, "\xde\xad\xbe\xef"_qba},
                    hex_case{"odd_number_of_digits", "abc"_q, "\x0a\xbc"_qba},
                    hex_case{"one_digit", "7"_q, "\x07"_qba},
                    hex_case{"separators_are_skipped", "01:ab 02\n"_q, "\x01\xab\x02"_qba},
                    hex_case{"other_letters_are_skipped", "xyz0g1"_q, "\x01"_qba},
                    hex_case{"no_digit_at_all", "xyz"_q, ""_qba},
                    hex_case{"not_ascii_is_skipped", "\u04160\u00e91\uff12"_q, "\x01"_qba},
                    hex_case{"zero_bytes", "0000"_q, "\0\0"_qba},
                    hex_case{"prefix_of_c", "0x0a"_q, "\0\x0a"_qba},
                    hex_case{"empty", ""_q, ""_qba}),
    [](const auto& info) { return std::string{info.param.name}; });

TEST(CommandFromJsonPayloadText, IsConvertedWithTheLocal8BitEncoding) {
    const shifting_locale_codec encoding;

    EXPECT_EQ(read("payload", "01"_q).payload, "\x12"_qba);
}

TEST(CommandToJson, WritesEveryKey) {
    EXPECT_EQ(compact(toJson(sampleCommand())),
              R"({"data":{"n":5},"db_id":"not stored","dl_status":"EXECUTED","f_ack":1,)"
              R"("modem_id":1001,"payload":"deadbeef","timeout":3600,"timestamp":1700000003,)"
              R"("ttl":1900000000})");
}

TEST(CommandToJson, WritesEveryKeyOfAnEmptyRecordToo) {
    dl_message empty;
    empty.ttl = empty.timestamp = utcSecs(0);

    EXPECT_EQ(compact(toJson(empty)),
              R"({"data":{},"db_id":"","dl_status":"PENDING","f_ack":0,"modem_id":0,)"
              R"("payload":"","timeout":0,"timestamp":0,"ttl":0})");
}

// Keys of the record that JSON output leaves out.
TEST(CommandToJson, KeyOfTheClientIsNotWritten) {
    EXPECT_FALSE(toJson(sampleCommand()).contains("api_key"_q));
    EXPECT_FALSE(toJson(sampleCommand()).contains("extra_text"_q));
    EXPECT_FALSE(toJson(sampleCommand()).contains("status"_q));
}

struct status_name {
    dl_message::dl_status status;
    const char* name;

    friend void PrintTo(const status_name& status, std::ostream* out) { *out << status.name; }
};

class CommandToJsonStatus : public testing::TestWithParam<status_name> {};

TEST_P(CommandToJsonStatus, IsWrittenByName) {
    dl_message message;
    message.status = GetParam().status;

    EXPECT_EQ(toJson(message).value("dl_status"_q), QString::fromLatin1(GetParam().name));
}

INSTANTIATE_TEST_SUITE_P(Each, CommandToJsonStatus,
                         testing::Values(status_name{dl_message::dl_status{0}, "PENDING"},
                                         status_name{dl_message::dl_status{1}, "WAIT_DATA"},
                                         status_name{dl_message::dl_status{2}, "EXECUTED"},
                                         status_name{dl_message::dl_status{3}, "TIMEOUT"}),
                         [](const auto& info) { return std::string{info.param.name}; });

TEST(CommandToJson, StatusWithoutANameIsWrittenAsAnEmptyText) {
    dl_message message;
    for (const int status : {-1, 4, 2147483647}) {
        message.status = static_cast<dl_message::dl_status>(status);

        EXPECT_EQ(toJson(message).value("dl_status"_q), QJsonValue{QString()}) << status;
    }
}

TEST(CommandToJson, PayloadIsReadBack) {
    dl_message message;
    for (int byte = 0; byte < 256; ++byte) {
        message.payload.append(static_cast<char>(byte));
    }

    EXPECT_EQ(fromJson<dl_message>(toJson(message)).payload, message.payload);
}

TEST(CommandToJson, ComesBackButForWhatIsNotReadOrNotWritten) {
    dl_message expected = sampleCommand();
    expected.ttl = expected.timestamp = QDateTime();
    expected.db_id.clear();
    expected.api_key.clear();
    expected.extra_text.clear();
    expected.status = dl_message::dl_status::PENDING;

    EXPECT_EQ(json_rows::read<dl_message>(toJson(sampleCommand())), expected);
}

} // namespace
