#include "model/model_convertors.h"

#include "tests/model/json/json_reader_rows.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using json_rows::accessor;
using model::custom_cmd;
using model_convertors::fromJson;
using namespace test_support::literals;

custom_cmd read(const char* key, const QJsonValue& value) {
    return fromJson<custom_cmd>(json_rows::with(key, value));
}

using custom_row = json_rows::row<custom_cmd>;

const std::vector<custom_row> rows{
    {"query", accessor::object, QJsonObject{{"b"_q, "2"_q}, {"a"_q, "1"_q}},
     [](custom_cmd& c) { c.query = {{"a"_q, "1"_q}, {"b"_q, "2"_q}}; }},
    {"body", accessor::object, QJsonObject{{"n"_q, 5}},
     [](custom_cmd& c) { c.body = QJsonObject{{"n"_q, 5}}; }},
    {"type", accessor::text, "reboot"_q, [](custom_cmd& c) { c.type = "reboot"_q; }},
    {"instance", accessor::text, "north"_q, [](custom_cmd& c) { c.instance = "north"_q; }},
    {"modem_id", accessor::array, QJsonArray{7, -8, 7},
     [](custom_cmd& c) { c.modem_id = {7, -8, 7}; }},
};

class CustomCommandFromJson : public testing::TestWithParam<custom_row> {};

TEST_P(CustomCommandFromJson, ReadsTheKeyIntoItsMemberAlone) {
    json_rows::expectKeyReachesItsMemberAlone(GetParam());
}

TEST_P(CustomCommandFromJson, TakesTheDefaultForAMistypedValue) {
    json_rows::expectMistypedValuesGiveTheDefault(GetParam());
}

TEST_P(CustomCommandFromJson, IgnoresOtherSpellingsOfTheKey) {
    json_rows::expectOtherSpellingsAreIgnored(GetParam());
}

INSTANTIATE_TEST_SUITE_P(Key, CustomCommandFromJson, testing::ValuesIn(rows),
                         json_rows::row_name{});

TEST(CustomCommand, IsEmptyByDefault) {
    EXPECT_EQ(fromJson<custom_cmd>({}), custom_cmd{});
}

// A number here is not a list of one device.
TEST(CustomCommand, ASingleDeviceNumberIsNoList) {
    EXPECT_TRUE(read("modem_id", 7).modem_id.isEmpty());
}

TEST(CustomCommand, DeviceThatIsNoNumberIsZeroAndKeepsItsPlace) {
    const QJsonArray devices{1, "2"_q, QJsonValue::Null, 2.5, 4294967296.0, true, QJsonArray{3}, 9};

    EXPECT_EQ(read("modem_id", devices).modem_id, (QList<int>{1, 0, 0, 0, 0, 0, 0, 9}));
}

TEST(CustomCommand, QueryValueThatIsNoTextIsEmptyAndKeepsItsKey) {
    const QJsonObject query{{"n"_q, 5},
                            {"t"_q, "text"_q},
                            {"o"_q, QJsonObject{}},
                            {"z"_q, QJsonValue::Null},
                            {"b"_q, true}};

    EXPECT_EQ(read("query", query).query,
              (QMap<QString, QString>{
                  {"b"_q, ""_q}, {"n"_q, ""_q}, {"o"_q, ""_q}, {"t"_q, "text"_q}, {"z"_q, ""_q}}));
}

TEST(CustomCommand, QueryKeysMayBeAnyText) {
    const QJsonObject query{{""_q, "empty"_q}, {"\u0416.$ \0:"_q, "odd"_q}};

    EXPECT_EQ(read("query", query).query,
              (QMap<QString, QString>{{""_q, "empty"_q}, {"\u0416.$ \0:"_q, "odd"_q}}));
}

TEST(CustomCommand, BodyIsTakenWhole) {
    const QJsonObject body =
        QJsonDocument::fromJson(R"({"a":[null,{"b":2.5}],"c":false})").object();

    EXPECT_EQ(read("body", body).body, body);
}

} // namespace
