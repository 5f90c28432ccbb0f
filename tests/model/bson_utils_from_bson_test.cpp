// BSON documents and arrays back to JSON.

#include "model/bson_utils.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/raw_bson.h"

#include <bsoncxx/v1/exception.hpp>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <string>

namespace {

using bson_utils::fromBsonArr;
using bson_utils::fromBsonJobj;
using bson_utils::fromBsonOther;
using namespace test_support::literals;
using namespace test_support::raw_bson;
using namespace std::string_literals;

const QJsonValue jsonNull{QJsonValue::Null};

struct bson_value {
    const char* name;
    element_bytes element;
    QJsonValue json;

    friend void PrintTo(const bson_value& parameter, std::ostream* out) { *out << parameter.name; }
};

/// Every type code of BSON, each element under the key "0".
const auto everyType = testing::Values(
    bson_value{"Double01", number("0", 2.5), 2.5}, bson_value{"WholeDouble01", number("0", 3.0), 3},
    bson_value{"String02", string("0", "x"), "x"_q},
    bson_value{"Document03", embedded("0", doc(int32("a", 1))), QJsonObject{{"a"_q, 1}}},
    bson_value{"Array04", array("0", doc(int32("0", 1))), QJsonArray{1}},
    bson_value{"Binary05", binary("0", "\x01\x02"), jsonNull},
    bson_value{"Uuid05", binary("0", "sixteen bytes ..", 4), jsonNull},
    bson_value{"Undefined06", undefined("0"), jsonNull},
    bson_value{"ObjectId07", oid("0", "twelve bytes"), jsonNull},
    bson_value{"True08", boolean("0", true), true},
    bson_value{"False08", boolean("0", false), false},
    bson_value{"Date09", date("0", 1577836800000), jsonNull},
    bson_value{"Null0A", null("0"), jsonNull},
    bson_value{"Regex0B", regex("0", "x", "i"), jsonNull},
    bson_value{"DbPointer0C", dbPointer("0", "db.c", "twelve bytes"), jsonNull},
    bson_value{"Code0D", code("0", "f()"), jsonNull},
    bson_value{"Symbol0E", symbol("0", "s"), jsonNull},
    bson_value{"CodeWithScope0F", codeWithScope("0", "f()", doc(int32("a", 1))), jsonNull},
    bson_value{"Int3210", int32("0", -5), -5},
    bson_value{"SmallestInt3210", int32("0", std::numeric_limits<std::int32_t>::min()),
               std::numeric_limits<std::int32_t>::min()},
    bson_value{"Timestamp11", timestamp("0", 5), jsonNull}, bson_value{"Int6412", int64("0", 5), 5},
    bson_value{"LargeInt6412", int64("0", 9007199254740991), 9007199254740991.0},
    bson_value{"Decimal12813", decimal128("0", 5, 0x3040000000000000), jsonNull},
    bson_value{"MinKeyFF", minKey("0"), jsonNull}, bson_value{"MaxKey7F", maxKey("0"), jsonNull});

class BsonTypeToJson : public testing::TestWithParam<bson_value> {};

TEST_P(BsonTypeToJson, InADocument) {
    EXPECT_EQ(fromBsonJobj(doc(GetParam().element).view()),
              (QJsonObject{{"0"_q, GetParam().json}}));
}

TEST_P(BsonTypeToJson, InAnArray) {
    EXPECT_EQ(fromBsonArr(doc(GetParam().element).arrayView()), QJsonArray{GetParam().json});
}

TEST_P(BsonTypeToJson, BeforeAnotherElement) {
    const document_bytes document = doc(GetParam().element, int32("1", 7));
    EXPECT_EQ(fromBsonJobj(document.view()), (QJsonObject{{"0"_q, GetParam().json}, {"1"_q, 7}}));
}

TEST_P(BsonTypeToJson, AloneUnlessItIsNested) {
    const document_bytes document = doc(GetParam().element);
    const bool nested = GetParam().json.isObject() || GetParam().json.isArray();
    EXPECT_EQ(fromBsonOther(document.view()["0"]), nested ? jsonNull : GetParam().json);
    EXPECT_EQ(fromBsonOther(*document.arrayView().begin()), nested ? jsonNull : GetParam().json);
}

INSTANTIATE_TEST_SUITE_P(EveryCode, BsonTypeToJson, everyType,
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(BsonToJson, OfNothingIsEmpty) {
    EXPECT_EQ(fromBsonJobj(doc().view()), QJsonObject{});
    EXPECT_EQ(fromBsonArr(doc().arrayView()), QJsonArray{});
}

TEST(BsonToJson, OfAnObjectIdADateAndAnInt64IsNullNullAndANumber) {
    const document_bytes document =
        doc(oid("a", "twelve bytes"), date("b", 1577836800000), int64("c", 42));
    EXPECT_EQ(fromBsonJobj(document.view()),
              (QJsonObject{{"a"_q, jsonNull}, {"b"_q, jsonNull}, {"c"_q, 42}}));
}

TEST(BsonToJson, KeepsTheLastOfARepeatedKey) {
    const document_bytes document = doc(int32("a", 1), int32("b", 2), string("a", "x"));
    EXPECT_EQ(fromBsonJobj(document.view()), (QJsonObject{{"a"_q, "x"_q}, {"b"_q, 2}}));
}

TEST(BsonToJson, IgnoresTheKeysOfAnArray) {
    const document_bytes document = doc(int32("7", 1), int32("x", 2), int32("7", 3));
    EXPECT_EQ(fromBsonArr(document.arrayView()), (QJsonArray{1, 2, 3}));
}

// Deliberate: what was written under a key in UTF-8 comes back under one character a byte.
TEST(BsonToJson, ReadsKeysAsLatin1) {
    const document_bytes document = doc(int32("\xd0\xba", 1), int32("\xc3\xa9", 2), int32("z", 3));
    EXPECT_EQ(fromBsonJobj(document.view()),
              (QJsonObject{{"\xc3\x90\xc2\xba"_q, 1}, {"\xc3\x83\xc2\xa9"_q, 2}, {"z"_q, 3}}));
}

TEST(BsonToJson, ReadsNestedKeysAsLatin1) {
    const document_bytes document =
        doc(array("l", doc(embedded("0", doc(embedded("\xc3\xa9", doc()))))));
    EXPECT_EQ(
        fromBsonJobj(document.view()),
        (QJsonObject{{"l"_q, QJsonArray{QJsonObject{{"\xc3\x83\xc2\xa9"_q, QJsonObject{}}}}}}));
}

TEST(BsonToJson, ReadsTextsAsUtf8) {
    const document_bytes document =
        doc(string("a", "\xd0\xba\xe2\x82\xac\xf0\x9f\x98\x80"), string("b", ""));
    EXPECT_EQ(fromBsonJobj(document.view()),
              (QJsonObject{{"a"_q, "\xd0\xba\xe2\x82\xac\xf0\x9f\x98\x80"_q}, {"b"_q, ""_q}}));
}

TEST(BsonToJson, KeepsZeroCharactersInTexts) {
    EXPECT_EQ(fromBsonJobj(doc(string("a", "x\0y"s)).view()), (QJsonObject{{"a"_q, "x\0y"_q}}));
}

TEST(BsonToJson, ReplacesInvalidUtf8) {
    const QString replacement{QChar{QChar::ReplacementCharacter}};
    EXPECT_EQ(fromBsonJobj(doc(string("a", "x\xff y")).view()),
              (QJsonObject{{"a"_q, QString{"x"_q + replacement + " y"_q}}}));
}

// Qt takes it for an encoding mark.
TEST(BsonToJson, DropsAByteOrderMarkAtTheStartOfAText) {
    EXPECT_EQ(fromBsonJobj(doc(string("a", "\xef\xbb\xbfx\xef\xbb\xbf")).view()),
              (QJsonObject{{"a"_q, QString{"x"_q + QChar{0xFEFF}}}}));
}

TEST(BsonToJson, TellsAnEmptyKeyFromAMissingOne) {
    EXPECT_EQ(fromBsonJobj(doc(int32("", 1)).view()), (QJsonObject{{""_q, 1}}));
}

TEST(BsonToJson, RoundsAnInt64Beyond2To53) {
    const QJsonObject json = fromBsonJobj(doc(int64("a", 9007199254740993),
                                              int64("b", std::numeric_limits<std::int64_t>::max()),
                                              int64("c", std::numeric_limits<std::int64_t>::min()))
                                              .view());
    EXPECT_EQ(json.value("a"_q).toDouble(), 9007199254740992.0);
    EXPECT_EQ(json.value("b"_q).toDouble(), 9223372036854775808.0);
    EXPECT_EQ(json.value("c"_q).toDouble(), -9223372036854775808.0);
}

TEST(BsonToJson, KeepsEveryBitOfADouble) {
    const QJsonObject json = fromBsonJobj(
        doc(number("a", 0.1), number("b", std::numeric_limits<double>::denorm_min()),
            number("c", std::nan("")), number("d", -std::numeric_limits<double>::infinity()))
            .view());
    EXPECT_EQ(json.value("a"_q).toDouble(), 0.1);
    EXPECT_EQ(json.value("b"_q).toDouble(), std::numeric_limits<double>::denorm_min());
    EXPECT_TRUE(json.value("c"_q).isDouble());
    EXPECT_TRUE(std::isnan(json.value("c"_q).toDouble()));
    EXPECT_EQ(json.value("d"_q).toDouble(), -std::numeric_limits<double>::infinity());
}

TEST(BsonToJson, FollowsDeepNesting) {
    document_bytes document = doc(int32("n", 1));
    QJsonObject expected{{"n"_q, 1}};
    for (int level = 0; level < 500; ++level) {
        document = doc(array("n", doc(embedded("0", document))));
        expected = QJsonObject{{"n"_q, QJsonArray{expected}}};
    }
    EXPECT_EQ(fromBsonJobj(document.view()), expected);
}

TEST(BsonToJson, ThrowsOnAnUnknownTypeCode) {
    document_bytes damaged = doc(int32("a", 1));
    damaged.bytes[4] = '\x55';
    EXPECT_THROW(fromBsonJobj(damaged.view()), bsoncxx::v1::exception);
    EXPECT_THROW(fromBsonArr(damaged.arrayView()), bsoncxx::v1::exception);
}

TEST(BsonToJson, ThrowsOnATextThatReachesBeyondItsDocument) {
    document_bytes damaged = doc(string("a", "xyz"));
    damaged.bytes[7] = 100;
    EXPECT_THROW(fromBsonJobj(damaged.view()), bsoncxx::v1::exception);
}

TEST(BsonToJson, ThrowsOnDamageInANestedDocument) {
    document_bytes damaged = doc(embedded("e", doc(int32("a", 1))));
    damaged.bytes[11] = '\x55';
    EXPECT_THROW(fromBsonJobj(damaged.view()), bsoncxx::v1::exception);
}

TEST(BsonToJson, UndoesWhatWasWrittenOfAnObject) {
    const QJsonObject json{{"a"_q, 1},
                           {"b"_q, "\xe2\x82\xac"_q},
                           {"c"_q, QJsonArray{true, 2.5, QJsonObject{{"d"_q, QJsonArray{}}}}}};
    EXPECT_EQ(fromBsonJobj(bson_utils::toBson(json).view()), json);
}

} // namespace
