// One QVariant as one BSON element.

#include "model/bson_utils.h"
#include "tests/support/log_capture.h"
#include "tests/support/qt_literals.h"
#include "tests/support/raw_bson.h"

#include <bsoncxx/v1/exception.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDate>
#include <QDateTime>
#include <QMetaType>
#include <QStringList>

#include <limits>
#include <ostream>
#include <string>

namespace {
struct own_type {
    int number = 0;
};
} // namespace
Q_DECLARE_METATYPE(own_type)

namespace {

using bson_utils::bson_builder;
using bson_utils::bsonAppend;
using namespace test_support;
using namespace test_support::literals;
using namespace test_support::raw_bson;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

document_bytes appended(const QVariant& value) {
    bson_builder document;
    bsonAppend(document, "k", value);
    return rawBson(document.take());
}

struct converted {
    const char* name;
    QVariant value;
    element_bytes element;

    friend void PrintTo(const converted& parameter, std::ostream* out) { *out << parameter.name; }
};

class BsonAppend : public testing::TestWithParam<converted> {};

TEST_P(BsonAppend, ConvertsWithoutALogLine) {
    const log_capture log;
    EXPECT_EQ(appended(GetParam().value), doc(GetParam().element));
    EXPECT_THAT(log.lines(), IsEmpty());
}

constexpr qint64 twoTo31 = qint64{1} << 31;
constexpr qint64 twoTo40 = qint64{1} << 40;
const double nan = std::numeric_limits<double>::quiet_NaN();
const double infinity = std::numeric_limits<double>::infinity();

INSTANTIATE_TEST_SUITE_P(
    Types, BsonAppend,
    testing::Values(
        converted{"Invalid", QVariant{}, string("k", "invalid type")},
        converted{"True", true, boolean("k", true)}, converted{"False", false, boolean("k", false)},
        converted{"NullBool", QVariant{QVariant::Bool}, boolean("k", false)},
        converted{"Int", 5, int32("k", 5)},
        converted{"SmallestInt", std::numeric_limits<int>::min(),
                  int32("k", std::numeric_limits<int>::min())},
        converted{"LargestInt", std::numeric_limits<int>::max(),
                  int32("k", std::numeric_limits<int>::max())},
        converted{"NullInt", QVariant{QVariant::Int}, int32("k", 0)},
        converted{"UInt", 5U, int32("k", 5)}, converted{"LongLong", qlonglong{-5}, int32("k", -5)},
        converted{"Double", 2.5, number("k", 2.5)}, converted{"WholeDouble", 3.0, number("k", 3.0)},
        converted{"NegativeZero", -0.0, number("k", -0.0)},
        converted{"SmallestDouble", std::numeric_limits<double>::denorm_min(),
                  number("k", std::numeric_limits<double>::denorm_min())},
        converted{"NotANumber", nan, number("k", nan)},
        converted{"Infinity", -infinity, number("k", -infinity)},
        converted{"NullDouble", QVariant{QVariant::Double}, number("k", 0.0)},
        converted{"String", "text"_q, string("k", "text")},
        converted{"EmptyString", ""_q, string("k", "")},
        converted{"NullString", QVariant{QVariant::String}, string("k", "")},
        converted{"StringBeyondAscii", "\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80"_q,
                  string("k", "\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80")},
        converted{"StringWithAZero", "a\0b"_q, string("k", "a\0b"s)},
        converted{"StringWithALoneSurrogate", QString{"x"_q + QChar{0xD800} + "y"_q},
                  string("k", "x?y")},
        converted{"StringOfDigits", "5"_q, string("k", "5")}),
    [](const auto& test) { return std::string{test.param.name}; });

// Deliberate: there is no int64; the low 32 bits remain.
INSTANTIATE_TEST_SUITE_P(
    NarrowsWideIntegers, BsonAppend,
    testing::Values(
        converted{"TwoTo40", qlonglong{twoTo40}, int32("k", 0)},
        converted{"TwoTo40AndSeven", qlonglong{twoTo40 + 7}, int32("k", 7)},
        converted{"MinusTwoTo40AndSeven", qlonglong{-twoTo40 - 7}, int32("k", -7)},
        converted{"TwoTo31", qlonglong{twoTo31}, int32("k", std::numeric_limits<int>::min())},
        converted{"LargestInt", qlonglong{twoTo31 - 1},
                  int32("k", std::numeric_limits<int>::max())},
        converted{"LargestLongLong", std::numeric_limits<qlonglong>::max(), int32("k", -1)},
        converted{"SmallestLongLong", std::numeric_limits<qlonglong>::min(), int32("k", 0)},
        converted{"UIntTwoTo31", 2147483648U, int32("k", std::numeric_limits<int>::min())},
        converted{"LargestUInt", 4294967295U, int32("k", -1)}),
    [](const auto& test) { return std::string{test.param.name}; });

struct unconverted {
    const char* name;
    QVariant value;
    QString line;

    friend void PrintTo(const unconverted& parameter, std::ostream* out) { *out << parameter.name; }
};

class BsonAppendOfAnUnknownType : public testing::TestWithParam<unconverted> {};

TEST_P(BsonAppendOfAnUnknownType, LogsOneLineAndStoresThatText) {
    const log_capture log;
    EXPECT_EQ(appended(GetParam().value), doc(string("k", "unknown type")));
    EXPECT_THAT(log.lines(),
                ElementsAre(debugLine("toBson() failed to convert qvariant "_q + GetParam().line)));
}

INSTANTIATE_TEST_SUITE_P(
    Types, BsonAppendOfAnUnknownType,
    testing::Values(
        unconverted{"ULongLong", qulonglong{5}, "QVariant(qulonglong, 5) with type qulonglong"_q},
        unconverted{"Char", QChar{u'x'}, "QVariant(QChar, 'x') with type QChar"_q},
        unconverted{
            "Map", QVariantMap{{"a"_q, 1}},
            "QVariant(QVariantMap, QMap((\"a\", QVariant(int, 1)))) with type QVariantMap"_q},
        unconverted{"List", QVariantList{1, "x"_q},
                    "QVariant(QVariantList, (QVariant(int, 1), QVariant(QString, \"x\"))) "
                    "with type QVariantList"_q},
        unconverted{"StringList", QStringList{"a"_q, "b"_q},
                    "QVariant(QStringList, (\"a\", \"b\")) with type QStringList"_q},
        unconverted{"ByteArray", "\x01\xab"_qba,
                    "QVariant(QByteArray, \"\\x01\\xAB\") with type QByteArray"_q},
        unconverted{"Date", QDate{2020, 1, 2},
                    "QVariant(QDate, QDate(\"2020-01-02\")) with type QDate"_q},
        unconverted{"DateTime", QDateTime::fromMSecsSinceEpoch(0, Qt::UTC),
                    "QVariant(QDateTime, QDateTime(1970-01-01 00:00:00.000 UTC Qt::UTC)) "
                    "with type QDateTime"_q},
        unconverted{"NullDateTime", QVariant{QVariant::DateTime},
                    "QVariant(QDateTime, QDateTime(Invalid)) with type QDateTime"_q},
        unconverted{"Hash", QVariantHash{{"a"_q, 1}},
                    "QVariant(QVariantHash, QHash((\"a\", QVariant(int, 1)))) "
                    "with type QVariantHash"_q},
        unconverted{"Long", QVariant::fromValue(5L), "QVariant(long, 5) with type long"_q},
        unconverted{"Short", QVariant::fromValue(short{5}), "QVariant(short, 5) with type short"_q},
        unconverted{"Float", 1.5F, "QVariant(float, 1.5) with type float"_q},
        unconverted{"NullPointer", QVariant::fromValue(nullptr),
                    "QVariant(std::nullptr_t, (nullptr)) with type std::nullptr_t"_q},
        unconverted{"JsonValue", QJsonValue{5},
                    "QVariant(QJsonValue, QJsonValue(double, 5)) with type QJsonValue"_q},
        unconverted{"JsonObject", QJsonObject{},
                    "QVariant(QJsonObject, QJsonObject()) with type QJsonObject"_q},
        unconverted{"UserType", QVariant::fromValue(own_type{}),
                    "QVariant(own_type, ) with type own_type"_q}),
    [](const auto& test) { return std::string{test.param.name}; });

TEST(BsonAppendTo, ADocumentAddsOneElementAtItsEnd) {
    bson_builder document;
    document.appendInt32("first", 1);
    bsonAppend(document, "second", "x"_q);
    bsonAppend(document, "second", QVariant{});
    EXPECT_EQ(rawBson(document.take()),
              doc(int32("first", 1), string("second", "x"), string("second", "invalid type")));
}

TEST(BsonAppendTo, ANestedDocumentStaysInIt) {
    bson_builder document;
    document.appendDocument("n", [](bson_builder& nested) { bsonAppend(nested, "k", 1); });
    EXPECT_EQ(rawBson(document.take()), doc(embedded("n", doc(int32("k", 1)))));
}

TEST(BsonAppendTo, AKeyWithAZeroThrows) {
    bson_builder document;
    EXPECT_THROW(bsonAppend(document, "a\0b"s, 1), bsoncxx::v1::exception);
    EXPECT_EQ(rawBson(document.take()), doc());
}

TEST(BsonAppendTo, SeveralUnknownTypesLogOneLineEach) {
    const log_capture log;
    bson_builder document;
    bsonAppend(document, "a", 1.5F);
    bsonAppend(document, "b", 1);
    bsonAppend(document, "c", 2.5F);
    EXPECT_THAT(
        log.lines(),
        ElementsAre(
            debugLine("toBson() failed to convert qvariant QVariant(float, 1.5) with type float"_q),
            debugLine(
                "toBson() failed to convert qvariant QVariant(float, 2.5) with type float"_q)));
}

} // namespace
