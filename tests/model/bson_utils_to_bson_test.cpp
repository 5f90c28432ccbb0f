// JSON objects and arrays to BSON, member by member: the path of a command's content and of the
// persistent copies.

#include "model/bson_utils.h"
#include "tests/support/qt_literals.h"
#include "tests/support/raw_bson.h"

#include <bsoncxx/v1/exception.hpp>

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace {

using bson_utils::toBson;
using namespace test_support::literals;
using namespace test_support::raw_bson;
using namespace std::string_literals;

const QJsonValue null{QJsonValue::Null};
using test_support::raw_bson::number;

TEST(JsonObjectToBson, IsEmptyWithoutMembers) {
    EXPECT_EQ(rawBson(toBson(QJsonObject{})), doc());
}

TEST(JsonObjectToBson, ConvertsEachType) {
    const QJsonObject json{{"a"_q, true},          {"b"_q, false},
                           {"c"_q, 2.5},           {"d"_q, "x"_q},
                           {"e"_q, QJsonArray{1}}, {"f"_q, QJsonObject{{"g"_q, 1}}}};
    EXPECT_EQ(rawBson(toBson(json)),
              doc(boolean("a", true), boolean("b", false), number("c", 2.5), string("d", "x"),
                  array("e", doc(number("0", 1.0))), embedded("f", doc(number("g", 1.0)))));
}

TEST(JsonObjectToBson, MakesEveryNumberADouble) {
    const QJsonObject json{{"a"_q, 0},
                           {"b"_q, 5},
                           {"c"_q, std::numeric_limits<int>::min()},
                           {"d"_q, qint64{1} << 40},
                           {"e"_q, 0.1},
                           {"f"_q, std::numeric_limits<double>::max()},
                           {"g"_q, std::numeric_limits<double>::denorm_min()}};
    EXPECT_EQ(rawBson(toBson(json)),
              doc(number("a", 0.0), number("b", 5.0), number("c", -2147483648.0),
                  number("d", 1099511627776.0), number("e", 0.1),
                  number("f", std::numeric_limits<double>::max()),
                  number("g", std::numeric_limits<double>::denorm_min())));
}

TEST(JsonObjectToBson, KeepsWhatJsonTextCannotHold) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    const QJsonObject json{{"a"_q, nan}, {"b"_q, infinity}, {"c"_q, -infinity}};
    EXPECT_EQ(rawBson(toBson(json)),
              doc(number("a", nan), number("b", infinity), number("c", -infinity)));
}

TEST(JsonObjectToBson, LeavesNullsOut) {
    const QJsonObject json{{"a"_q, 1}, {"b"_q, null}};
    EXPECT_EQ(rawBson(toBson(json)), doc(number("a", 1.0)));
}

TEST(JsonObjectToBson, LeavesNestedNullsOut) {
    const QJsonObject json{{"a"_q, QJsonObject{{"b"_q, null}}},
                           {"c"_q, QJsonArray{null, QJsonArray{null}, QJsonObject{{"d"_q, null}}}}};
    EXPECT_EQ(rawBson(toBson(json)),
              doc(embedded("a", doc()), array("c", doc(array("0", doc()), embedded("1", doc())))));
}

TEST(JsonObjectToBson, OfOnlyNullsIsEmpty) {
    EXPECT_EQ(rawBson(toBson(QJsonObject{{"a"_q, null}, {"b"_q, null}})), doc());
}

TEST(JsonObjectToBson, OrdersMembersByKey) {
    const QJsonObject json{{"b"_q, 1}, {"a"_q, 2}, {"B"_q, 3}, {"10"_q, 4}, {"9"_q, 5}, {""_q, 6}};
    EXPECT_EQ(rawBson(toBson(json)), doc(number("", 6.0), number("10", 4.0), number("9", 5.0),
                                         number("B", 3.0), number("a", 2.0), number("b", 1.0)));
}

TEST(JsonObjectToBson, CopiesKeysWithDollarsAndDots) {
    const QJsonObject json{{"$"_q, 1}, {"$set"_q, 2}, {"."_q, 3}, {"a.b"_q, 4}};
    EXPECT_EQ(rawBson(toBson(json)),
              doc(number("$", 1.0), number("$set", 2.0), number(".", 3.0), number("a.b", 4.0)));
}

TEST(JsonObjectToBson, TakesWrapperObjectsForOrdinaryOnes) {
    const QJsonObject json{{"a"_q, QJsonObject{{"$date"_q, 5}}},
                           {"b"_q, QJsonObject{{"$oid"_q, "0123456789abcdef01234567"_q}}}};
    EXPECT_EQ(rawBson(toBson(json)),
              doc(embedded("a", doc(number("$date", 5.0))),
                  embedded("b", doc(string("$oid", "0123456789abcdef01234567")))));
}

TEST(JsonObjectToBson, WritesKeysAndTextsAsUtf8) {
    const QJsonObject json{{"\xd0\xba\xd0\xbb\xd1\x8e\xd1\x87"_q, "\xe2\x82\xac"_q},
                           {"\xf0\x9f\x98\x80"_q, "\xf0\x9f\x98\x80\xc3\xa9"_q}};
    EXPECT_EQ(rawBson(toBson(json)), doc(string("\xd0\xba\xd0\xbb\xd1\x8e\xd1\x87", "\xe2\x82\xac"),
                                         string("\xf0\x9f\x98\x80", "\xf0\x9f\x98\x80\xc3\xa9")));
}

TEST(JsonObjectToBson, KeepsControlAndZeroCharactersInTexts) {
    const QJsonObject json{{"a"_q, "x\0y"_q}, {"b"_q, "\n\t\"\\\x01\x7f"_q}, {"c"_q, "\0"_q}};
    EXPECT_EQ(rawBson(toBson(json)),
              doc(string("a", "x\0y"s), string("b", "\n\t\"\\\x01\x7f"), string("c", "\0"s)));
}

TEST(JsonObjectToBson, WritesALoneSurrogateAsAQuestionMark) {
    const QJsonObject json{{"a"_q, QString{QChar{0xD800}}},
                           {"b"_q, QString{"x"_q + QChar{0xDC00} + "y"_q}}};
    EXPECT_EQ(rawBson(toBson(json)), doc(string("a", "?"), string("b", "x?y")));
}

TEST(JsonObjectToBson, RefusesAZeroInAKey) {
    EXPECT_THROW(toBson(QJsonObject{{"a\0b"_q, 1}}), bsoncxx::v1::exception);
    EXPECT_THROW(toBson(QJsonObject{{"\0"_q, "x"_q}}), bsoncxx::v1::exception);
    EXPECT_THROW(toBson(QJsonObject{{"n"_q, QJsonObject{{"a\0b"_q, 1}}}}), bsoncxx::v1::exception);
    EXPECT_THROW(toBson(QJsonArray{QJsonObject{{"a\0b"_q, QJsonArray{}}}}), bsoncxx::v1::exception);
}

TEST(JsonObjectToBson, FollowsDeepNesting) {
    QJsonObject json{{"n"_q, true}};
    document_bytes expected = doc(boolean("n", true));
    for (int level = 0; level < 500; ++level) {
        json = QJsonObject{{"n"_q, json}};
        expected = doc(embedded("n", expected));
    }
    EXPECT_EQ(rawBson(toBson(json)), expected);
}

TEST(JsonArrayToBson, IsEmptyWithoutElements) {
    EXPECT_EQ(rawBson(toBson(QJsonArray{})), doc());
}

TEST(JsonArrayToBson, NumbersElementsOfEachTypeInOrder) {
    const QJsonArray json{"x"_q, 2.5, true, QJsonObject{{"a"_q, 1}}, QJsonArray{false}};
    EXPECT_EQ(rawBson(toBson(json)),
              doc(string("0", "x"), number("1", 2.5), boolean("2", true),
                  embedded("3", doc(number("a", 1.0))), array("4", doc(boolean("0", false)))));
}

TEST(JsonArrayToBson, MovesElementsDownOverANull) {
    EXPECT_EQ(rawBson(toBson(QJsonArray{1, null, "x"_q})), doc(number("0", 1.0), string("1", "x")));
}

TEST(JsonArrayToBson, MovesElementsDownOverAnUndefined) {
    // An array stores an undefined value as a null.
    const QJsonArray json{QJsonValue{QJsonValue::Undefined}, 1};
    EXPECT_EQ(rawBson(toBson(json)), doc(number("0", 1.0)));
}

TEST(JsonArrayToBson, OfOnlyNullsIsEmpty) {
    EXPECT_EQ(rawBson(toBson(QJsonArray{null, null})), doc());
}

TEST(JsonArrayToBson, NumbersBeyondNine) {
    QJsonArray json;
    std::string elements;
    for (int index = 0; index < 1001; ++index) {
        json.append(index);
        elements += number(std::to_string(index), index);
    }
    EXPECT_EQ(rawBson(toBson(json)), doc(elements));
}

TEST(JsonArrayToBson, KeepsEmptyObjectsAndArrays) {
    EXPECT_EQ(rawBson(toBson(QJsonArray{QJsonObject{}, QJsonArray{}})),
              doc(embedded("0", doc()), array("1", doc())));
}

} // namespace
