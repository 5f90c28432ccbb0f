// JSON documents to BSON by way of JSON text and libbson's extended-JSON reader: the path of an
// uplink's "data" and of every "extended_data".

#include "model/bson_utils.h"
#include "tests/support/qt_literals.h"
#include "tests/support/raw_bson.h"

#include <bsoncxx/v1/exception.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <ostream>
#include <string>

namespace {

using bson_utils::toBson;
using namespace test_support::literals;
using namespace test_support::raw_bson;
using namespace std::string_literals;
using testing::HasSubstr;

const QJsonValue jsonNull{QJsonValue::Null};

/// The document {"a": value}.
QJsonDocument with(const QJsonValue& value) {
    return QJsonDocument{QJsonObject{{"a"_q, value}}};
}

/// Parses JSON text, which must be valid.
QJsonDocument parsed(const char* text) {
    QJsonParseError error;
    const QJsonDocument json = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError) {
        throw std::invalid_argument(text);
    }
    return json;
}

struct typed_number {
    const char* name;
    QJsonValue value;
    element_bytes element;

    friend void PrintTo(const typed_number& parameter, std::ostream* out) {
        *out << parameter.name;
    }
};

class JsonTextNumber : public testing::TestWithParam<typed_number> {};

TEST_P(JsonTextNumber, GetsItsBsonTypeFromItsText) {
    EXPECT_EQ(rawBson(toBson(with(GetParam().value))), doc(GetParam().element));
}

INSTANTIATE_TEST_SUITE_P(
    Values, JsonTextNumber,
    testing::Values(
        typed_number{"Zero", 0, int32("a", 0)}, typed_number{"Int", 5, int32("a", 5)},
        typed_number{"NegativeInt", -5, int32("a", -5)},
        typed_number{"WholeDouble", 3.0, int32("a", 3)},
        typed_number{"NegativeZero", -0.0, int32("a", 0)},
        typed_number{"LargestInt32", 2147483647.0,
                     int32("a", std::numeric_limits<std::int32_t>::max())},
        typed_number{"AboveInt32", 2147483648.0, int64("a", 2147483648)},
        typed_number{"SmallestInt32", -2147483648.0,
                     int32("a", std::numeric_limits<std::int32_t>::min())},
        typed_number{"BelowInt32", -2147483649.0, int64("a", -2147483649)},
        typed_number{"TwoTo40", qint64{1} << 40, int64("a", 1099511627776)},
        typed_number{"TwoTo53", qint64{1} << 53, int64("a", 9007199254740992)},
        typed_number{"MinusTwoTo53", -(qint64{1} << 53), int64("a", -9007199254740992)},
        typed_number{"TenTo18", 1e18, int64("a", 1000000000000000000)},
        typed_number{"Fraction", 2.5, number("a", 2.5)},
        typed_number{"NegativeFraction", -0.5, number("a", -0.5)},
        typed_number{"Tenth", 0.1, number("a", 0.1)},
        typed_number{"SeventeenDigits", 0.30000000000000004, number("a", 0.30000000000000004)},
        typed_number{"SmallExponent", 1e-7, number("a", 1e-7)},
        typed_number{"WholeWithExponent", 1e20, number("a", 1e20)},
        typed_number{"Huge", 1e300, number("a", 1e300)},
        typed_number{"LargestDouble", std::numeric_limits<double>::max(),
                     number("a", std::numeric_limits<double>::max())},
        typed_number{"SmallestDouble", std::numeric_limits<double>::denorm_min(),
                     number("a", std::numeric_limits<double>::denorm_min())},
        // JSON text has no way to write these three.
        typed_number{"NotANumber", std::nan(""), null("a")},
        typed_number{"Infinity", std::numeric_limits<double>::infinity(), null("a")},
        typed_number{"MinusInfinity", -std::numeric_limits<double>::infinity(), null("a")}),
    [](const auto& test) { return std::string{test.param.name}; });

TEST(JsonText, OfANullDocumentIsEmpty) {
    EXPECT_EQ(rawBson(toBson(QJsonDocument{})), doc());
}

TEST(JsonText, OfAnEmptyObjectIsEmpty) {
    EXPECT_EQ(rawBson(toBson(QJsonDocument{QJsonObject{}})), doc());
}

TEST(JsonText, OfAnEmptyArrayIsEmpty) {
    EXPECT_EQ(rawBson(toBson(QJsonDocument{QJsonArray{}})), doc());
}

TEST(JsonText, OfAnArrayIsADocumentWithItsIndexesAsKeys) {
    const QJsonArray json{1, jsonNull, "x"_q, true, 2.5, QJsonArray{}, QJsonObject{}};
    EXPECT_EQ(rawBson(toBson(QJsonDocument{json})),
              doc(int32("0", 1), null("1"), string("2", "x"), boolean("3", true), number("4", 2.5),
                  array("5", doc()), embedded("6", doc())));
}

TEST(JsonText, ConvertsEachType) {
    const QJsonObject json{{"a"_q, true},
                           {"b"_q, false},
                           {"c"_q, "x"_q},
                           {"d"_q, QJsonArray{1, "y"_q}},
                           {"e"_q, QJsonObject{{"f"_q, 1}}},
                           {"g"_q, jsonNull}};
    EXPECT_EQ(rawBson(toBson(QJsonDocument{json})),
              doc(boolean("a", true), boolean("b", false), string("c", "x"),
                  array("d", doc(int32("0", 1), string("1", "y"))),
                  embedded("e", doc(int32("f", 1))), null("g")));
}

TEST(JsonText, KeepsNullsWhereObjectsDropThem) {
    const QJsonObject json{{"a"_q, 1}, {"b"_q, jsonNull}};
    EXPECT_EQ(rawBson(toBson(QJsonDocument{json})), doc(int32("a", 1), null("b")));
    EXPECT_EQ(rawBson(toBson(json)), doc(number("a", 1.0)));
}

TEST(JsonText, KeepsNestedNulls) {
    const QJsonObject json{{"a"_q, QJsonArray{jsonNull, 1}},
                           {"b"_q, QJsonObject{{"c"_q, jsonNull}}}};
    EXPECT_EQ(rawBson(toBson(QJsonDocument{json})),
              doc(array("a", doc(null("0"), int32("1", 1))), embedded("b", doc(null("c")))));
}

TEST(JsonText, OrdersMembersByKey) {
    EXPECT_EQ(rawBson(toBson(parsed(R"({"b": 1, "a": 2, "B": 3, "": 4})"))),
              doc(int32("", 4), int32("B", 3), int32("a", 2), int32("b", 1)));
}

TEST(JsonText, KeepsDotsAndUnknownDollarsInKeys) {
    EXPECT_EQ(
        rawBson(toBson(parsed(R"({"$set": 1, ".": 2, "a.b": 3, "c": {"$gt": 4}})"))),
        doc(int32("$set", 1), int32(".", 2), int32("a.b", 3), embedded("c", doc(int32("$gt", 4)))));
}

TEST(JsonText, WritesKeysAndTextsAsUtf8) {
    const QJsonObject json{{"\xd0\xba\xd0\xbb\xd1\x8e\xd1\x87"_q, "\xe2\x82\xac"_q},
                           {"\xf0\x9f\x98\x80"_q, "\xf0\x9f\x98\x80\xc3\xa9"_q}};
    EXPECT_EQ(rawBson(toBson(QJsonDocument{json})),
              doc(string("\xd0\xba\xd0\xbb\xd1\x8e\xd1\x87", "\xe2\x82\xac"),
                  string("\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80\xc3\xa9")));
}

TEST(JsonText, KeepsControlAndZeroCharactersInTexts) {
    const QJsonObject json{{"a"_q, "x\0y"_q},
                           {"b"_q, "\"\\/\b\f\n\r\t\x01\x1f\x7f"_q},
                           {"c"_q, "\0"_q},
                           {"d"_q, "\\u0041"_q}};
    EXPECT_EQ(rawBson(toBson(QJsonDocument{json})),
              doc(string("a", "x\0y"s), string("b", "\"\\/\b\f\n\r\t\x01\x1f\x7f"),
                  string("c", "\0"s), string("d", "\\u0041")));
}

TEST(JsonText, KeepsQuotesAndControlCharactersInKeys) {
    const QJsonObject json{{"\""_q, 1}, {"\n"_q, 2}, {"\\"_q, 3}, {"a b"_q, 4}};
    EXPECT_EQ(rawBson(toBson(QJsonDocument{json})),
              doc(int32("\n", 2), int32("\"", 1), int32("\\", 3), int32("a b", 4)));
}

TEST(JsonText, KeepsALongText) {
    const std::string text(200'000, 'x');
    EXPECT_EQ(rawBson(toBson(with(QString::fromStdString(text)))), doc(string("a", text)));
}

TEST(JsonText, RefusesAZeroInAKey) {
    EXPECT_THROW(toBson(QJsonDocument{QJsonObject{{"a\0b"_q, 1}}}), bsoncxx::v1::exception);
    EXPECT_THROW(toBson(QJsonDocument{QJsonObject{{"\0"_q, 1}}}), bsoncxx::v1::exception);
    EXPECT_THROW(toBson(with(QJsonObject{{"a\0b"_q, 1}})), bsoncxx::v1::exception);
}

TEST(JsonText, RefusesALoneSurrogate) {
    EXPECT_THROW(toBson(with(QString{QChar{0xD800}})), bsoncxx::v1::exception);
    EXPECT_THROW(toBson(with(QString{"x"_q + QChar{0xDC00} + "y"_q})), bsoncxx::v1::exception);
    EXPECT_THROW(toBson(QJsonDocument{QJsonObject{{QString{QChar{0xD800}}, 1}}}),
                 bsoncxx::v1::exception);
}

struct wrapper {
    const char* name;
    const char* json;
    document_bytes document;

    friend void PrintTo(const wrapper& parameter, std::ostream* out) { *out << parameter.json; }
};

class JsonTextWrapper : public testing::TestWithParam<wrapper> {};

TEST_P(JsonTextWrapper, BecomesItsBsonType) {
    EXPECT_EQ(rawBson(toBson(parsed(GetParam().json))), GetParam().document);
}

const std::string oidBytes = "\x01\x23\x45\x67\x89\xab\xcd\xef\x01\x23\x45\x67";

INSTANTIATE_TEST_SUITE_P(
    Kinds, JsonTextWrapper,
    testing::Values(
        wrapper{"DateAsText", R"({"a": {"$date": "2020-01-01T00:00:00Z"}})",
                doc(date("a", 1577836800000))},
        wrapper{"DateAsTextWithZone", R"({"a": {"$date": "2020-01-01T01:00:00.250+0100"}})",
                doc(date("a", 1577836800250))},
        wrapper{"DateAsNumber", R"({"a": {"$date": 1577836800000}})",
                doc(date("a", 1577836800000))},
        wrapper{"DateBefore1970", R"({"a": {"$date": -5}})", doc(date("a", -5))},
        wrapper{"DateAsLong", R"({"a": {"$date": {"$numberLong": "1577836800000"}}})",
                doc(date("a", 1577836800000))},
        wrapper{"ObjectId", R"({"a": {"$oid": "0123456789abcdef01234567"}})",
                doc(oid("a", oidBytes))},
        wrapper{"ObjectIdInUpperCase", R"({"a": {"$oid": "0123456789ABCDEF01234567"}})",
                doc(oid("a", oidBytes))},
        wrapper{"InAnArray", R"({"a": [{"$date": 5}, {"$oid": "0123456789abcdef01234567"}]})",
                doc(array("a", doc(date("0", 5), oid("1", oidBytes))))},
        wrapper{"InAnArrayDocument", R"([{"$date": 5}])", doc(date("0", 5))},
        wrapper{"Nested", R"({"n": {"a": {"$date": 5}}})", doc(embedded("n", doc(date("a", 5))))},
        // Only a value can be a wrapper, not the document itself.
        wrapper{"AtTheTop", R"({"$date": 5})", doc(int32("$date", 5))},
        wrapper{"ObjectIdAtTheTop", R"({"$oid": "x"})", doc(string("$oid", "x"))},
        wrapper{"AfterAnotherKey", R"({"a": {"!": 1, "$oid": "x"}})",
                doc(embedded("a", doc(int32("!", 1), string("$oid", "x"))))},
        wrapper{"Long", R"({"a": {"$numberLong": "5"}})", doc(int64("a", 5))},
        wrapper{"Undefined", R"({"a": {"$undefined": true}})", doc(undefined("a"))},
        wrapper{"Binary", R"({"a": {"$binary": "AQI=", "$type": "00"}})",
                doc(binary("a", "\x01\x02"))}),
    [](const auto& test) { return std::string{test.param.name}; });

struct rejected {
    const char* name;
    const char* json;
    const char* reason;

    friend void PrintTo(const rejected& parameter, std::ostream* out) { *out << parameter.json; }
};

class JsonTextRejected : public testing::TestWithParam<rejected> {};

TEST_P(JsonTextRejected, ThrowsTheReadersOwnWords) {
    try {
        toBson(parsed(GetParam().json));
        FAIL() << "the text was accepted";
    } catch (const bsoncxx::v1::exception& error) {
        EXPECT_THAT(error.what(), HasSubstr(GetParam().reason));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Wrappers, JsonTextRejected,
    testing::Values(
        rejected{"DateOfNonsense", R"({"a": {"$date": "nonsense"}})",
                 "Could not parse \"nonsense\" as date"},
        rejected{"DateWithAFraction", R"({"a": {"$date": 5.5}})", "Invalid read of double"},
        rejected{"DateOfNull", R"({"a": {"$date": null}})", "Invalid read of null"},
        rejected{"DateWithAnotherKey", R"({"a": {"$date": 5, "x": 1}})", "Invalid key \"x\""},
        rejected{"ShortObjectId", R"({"a": {"$oid": "xyz"}})", "Invalid input string \"xyz\""},
        rejected{"ObjectIdOfANumber", R"({"a": {"$oid": 5}})", "Unexpected integer 5"},
        rejected{"ObjectIdWithAnotherKey", R"({"a": {"$oid": "0123456789abcdef01234567", "b": 1}})",
                 "Invalid key \"b\""}),
    [](const auto& test) { return std::string{test.param.name}; });

TEST(JsonText, RejectedIsARuntimeErrorWithTheText) {
    try {
        toBson(parsed(R"({"a": {"$oid": 5}})"));
        FAIL() << "the text was accepted";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr(R"({"a":{"$oid":5}})"));
    }
}

QJsonObject nestedJson(int levels) {
    QJsonObject json{{"n"_q, 1}};
    for (int level = 1; level < levels; ++level) {
        json = QJsonObject{{"n"_q, json}};
    }
    return json;
}

TEST(JsonText, FollowsNestingOf98Levels) {
    document_bytes expected = doc(int32("n", 1));
    for (int level = 1; level < 98; ++level) {
        expected = doc(embedded("n", expected));
    }
    EXPECT_EQ(rawBson(toBson(QJsonDocument{nestedJson(98)})), expected);
}

TEST(JsonText, RefusesNestingBeyondTheReadersLimit) {
    EXPECT_THROW(toBson(QJsonDocument{nestedJson(200)}), bsoncxx::v1::exception);
    EXPECT_THROW(toBson(QJsonDocument{nestedJson(2000)}), bsoncxx::v1::exception);
}

} // namespace
