#include "model/model_convertors.h"

#include "tests/model/json/changed_locale_codec.h"
#include "tests/model/json/json_reader_rows.h"
#include "tests/support/record_samples.h"
#include "tests/support/time_zone.h"

#include <gtest/gtest.h>

#include <vector>

// Heartbeats and incoming messages: separate types with twelve members in common.
namespace {

using json_rows::accessor;
using model::hb_message;
using model::in_message;
using model_convertors::fromJson;
using namespace test_support;
using namespace test_support::literals;

template <typename Record>
std::vector<json_rows::row<Record>> commonRows() {
    return {
        {"modem_id", accessor::integer, 1001, [](Record& m) { m.modem_id = 1001; }},
        {"station_id", accessor::integer, 2002, [](Record& m) { m.station_id = 2002; }},
        {"iterator", accessor::integer, 2147483647, [](Record& m) { m.iterator = 2147483647; }},
        {"phy", accessor::text, "phy-868"_q, [](Record& m) { m.phy = "phy-868"_q; }},
        {"snr", accessor::integer, -7, [](Record& m) { m.snr = -7; }},
        {"rssi", accessor::integer, -112, [](Record& m) { m.rssi = -112; }},
        {"hw_type", accessor::text, "meter-3"_q, [](Record& m) { m.hw_type = "meter-3"_q; }},
        {"protocol", accessor::text, "proto-9"_q, [](Record& m) { m.protocol = "proto-9"_q; }},
        {"time_detected", accessor::integer, 1700000001,
         [](Record& m) { m.time_detected = utcSecs(1700000001); }},
        {"time_saved", accessor::integer, -5, [](Record& m) { m.time_saved = utcSecs(-5); }},
        {"payload", accessor::text, "0a0bFF"_q, [](Record& m) { m.payload = "\x0a\x0b\xff"_qba; }},
        {"bs_tz", accessor::integer, -180, [](Record& m) { m.bs_tz = -180; }},
    };
}

template <typename Record>
std::vector<json_rows::row<Record>> commonRowsAnd(std::vector<json_rows::row<Record>> own) {
    const auto common = commonRows<Record>();
    own.insert(own.end(), common.begin(), common.end());
    return own;
}

using heartbeat_row = json_rows::row<hb_message>;
class HeartbeatFromJson : public testing::TestWithParam<heartbeat_row> {};

TEST_P(HeartbeatFromJson, ReadsTheKeyIntoItsMemberAlone) {
    json_rows::expectKeyReachesItsMemberAlone(GetParam());
}

TEST_P(HeartbeatFromJson, TakesTheDefaultForAMistypedValue) {
    json_rows::expectMistypedValuesGiveTheDefault(GetParam());
}

TEST_P(HeartbeatFromJson, IgnoresOtherSpellingsOfTheKey) {
    json_rows::expectOtherSpellingsAreIgnored(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Key, HeartbeatFromJson,
                         testing::ValuesIn(commonRowsAnd<hb_message>({
                             {"temperature", accessor::real, -12.75,
                              [](hb_message& m) { m.temperature = -12.75; }},
                             {"voltage", accessor::real, 3, [](hb_message& m) { m.voltage = 3.0; }},
                         })),
                         json_rows::row_name{});

using incoming_row = json_rows::row<in_message>;
class IncomingFromJson : public testing::TestWithParam<incoming_row> {};

TEST_P(IncomingFromJson, ReadsTheKeyIntoItsMemberAlone) {
    json_rows::expectKeyReachesItsMemberAlone(GetParam());
}

TEST_P(IncomingFromJson, TakesTheDefaultForAMistypedValue) {
    json_rows::expectMistypedValuesGiveTheDefault(GetParam());
}

TEST_P(IncomingFromJson, IgnoresOtherSpellingsOfTheKey) {
    json_rows::expectOtherSpellingsAreIgnored(GetParam());
}

INSTANTIATE_TEST_SUITE_P(
    Key, IncomingFromJson,
    testing::ValuesIn(commonRowsAnd<in_message>({
        {"dl_phy", accessor::text, "phy-869"_q, [](in_message& m) { m.dl_phy = "phy-869"_q; }},
        {"dl_mode", accessor::text, "fast"_q, [](in_message& m) { m.dl_mode = "fast"_q; }},
        {"last_dl_bs", accessor::integer, 31, [](in_message& m) { m.last_dl_bs = 31; }},
        {"last_dl_bs_aver_busyness", accessor::real, 0.25,
         [](in_message& m) { m.last_dl_bs_aver_busyness = 0.25; }},
        {"last_dl_bs_busyness", accessor::real, 1e300,
         [](in_message& m) { m.last_dl_bs_busyness = 1e300; }},
        // A number, not a time.
        {"last_success_dl_ts", accessor::integer, 1700000002,
         [](in_message& m) { m.last_success_dl_ts = 1700000002; }},
    })),
    json_rows::row_name{});

template <typename Record>
class ReceptionFromJson : public testing::Test {
protected:
    static Record read(const char* key, const QJsonValue& value) {
        return fromJson<Record>(json_rows::with(key, value));
    }
};

struct record_names {
    template <typename Record>
    static std::string GetName(int) {
        return std::is_same_v<Record, hb_message> ? "hb_message" : "in_message";
    }
};
using Receptions = testing::Types<hb_message, in_message>;
TYPED_TEST_SUITE(ReceptionFromJson, Receptions, record_names);

TYPED_TEST(ReceptionFromJson, DefaultsAreZerosTheEpochAndEmptyTexts) {
    TypeParam expected;
    expected.time_detected = expected.time_saved = utcSecs(0);

    EXPECT_EQ(fromJson<TypeParam>({}), expected);
}

// Deliberate: uplinks have local time.
TYPED_TEST(ReceptionFromJson, TimesAreInUtc) {
    const local_time_zone zone{"XST-05:30"};

    EXPECT_EQ(this->read("time_detected", 1700000001).time_detected, utcSecs(1700000001));
    EXPECT_EQ(this->read("time_detected", 1700000001).time_detected.timeSpec(), Qt::UTC);
    EXPECT_EQ(this->read("time_saved", 1700000002).time_saved, utcSecs(1700000002));
    EXPECT_EQ(this->read("time_saved", 1700000002).time_saved.timeSpec(), Qt::UTC);
}

TYPED_TEST(ReceptionFromJson, TimesAfterThe32BitRangeAreTheEpoch) {
    EXPECT_EQ(this->read("time_saved", 2147483648.0).time_saved, utcSecs(0));
}

// Deliberate: uplinks have a number there.
TYPED_TEST(ReceptionFromJson, HwTypeIsAText) {
    EXPECT_EQ(this->read("hw_type", "321"_q).hw_type, "321"_q);
    EXPECT_EQ(this->read("hw_type", 321).hw_type, QString());
}

TYPED_TEST(ReceptionFromJson, PayloadIsHexadecimalOfTheLocal8BitEncoding) {
    const shifting_locale_codec encoding;

    EXPECT_EQ(this->read("payload", "01"_q).payload, "\x12"_qba);
}

TYPED_TEST(ReceptionFromJson, PayloadSkipsWhatIsNoDigit) {
    EXPECT_EQ(this->read("payload", "0-a z \u0416 ff"_q).payload, "\x0a\xff"_qba);
}

TYPED_TEST(ReceptionFromJson, TextsKeepEveryCharacter) {
    const QString text = "\u0416\U0001F50C\n\"\\ \0z"_q;

    EXPECT_EQ(this->read("protocol", text).protocol, text);
}

TYPED_TEST(ReceptionFromJson, ReadsAllMembersOfOneObject) {
    QJsonObject json;
    TypeParam expected = fromJson<TypeParam>({});
    for (const auto& row : commonRows<TypeParam>()) {
        json.insert(QString::fromLatin1(row.key), row.given);
        row.change(expected);
    }

    EXPECT_EQ(fromJson<TypeParam>(json), expected);
}

TEST(HeartbeatFromJsonReals, FractionsAndLargeNumbersAreKept) {
    const QJsonObject json =
        QJsonDocument::fromJson(R"({"temperature": 9007199254740993, "voltage": -0.1})").object();

    EXPECT_EQ(fromJson<hb_message>(json).temperature, 9007199254740992.0);
    EXPECT_EQ(fromJson<hb_message>(json).voltage, -0.1);
}

} // namespace
