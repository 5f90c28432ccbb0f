// The walk that gives up at the first thing out of the ordinary.

#include "model/bson/ordinary_fields.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/raw_bson.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <ostream>
#include <string>

namespace {

using bson_utils::ordinary_fields;
using namespace test_support::literals;
using namespace test_support::raw_bson;
using test_support::raw_bson::null;

const std::string oidBytes = "\x01\x23\x45\x67\x89\xab\xcd\xef\x01\x23\x45\x67";

TEST(OrdinaryFields, AreReadInTheirOrder) {
    const auto document = doc(oid("o", oidBytes), int32("i", -5), int64("l", (1LL << 32) + 60),
                              int64("s", -7), string("t", "é"), string("h", "0a0B"), date("d", -3),
                              embedded("e", doc(int32("n", 1))), number("v", 2.5));
    bson_utils::query_memory memory;
    ordinary_fields fields{document.view(), memory};

    EXPECT_EQ(fields.oid("o"), "0123456789abcdef01234567"_q);
    EXPECT_EQ(fields.number("i"), -5);
    EXPECT_EQ(fields.localSecs("l"), QDateTime::fromMSecsSinceEpoch(60'000));
    EXPECT_EQ(fields.utcSecs("s"), QDateTime::fromSecsSinceEpoch(-7, Qt::UTC));
    EXPECT_EQ(fields.text("t"), "\xc3\xa9"_q);
    EXPECT_EQ(fields.hexBytes("h"), QByteArray("\x0a\x0b"));
    EXPECT_EQ(fields.localTime("d"), QDateTime::fromMSecsSinceEpoch(-3));
    EXPECT_EQ(fields.object("e"), (QJsonObject{{"n"_q, 1}}));
    EXPECT_EQ(fields.value("v"), QVariant(2.5));
    EXPECT_TRUE(fields.ordinary());
}

TEST(OrdinaryFields, GiveUpWhenSomethingIsLeft) {
    const auto document = doc(int32("a", 1), int32("b", 2));
    bson_utils::query_memory memory;
    ordinary_fields fields{document.view(), memory};
    fields.number("a");
    EXPECT_FALSE(fields.ordinary());
}

TEST(OrdinaryFields, GiveUpWhenOneIsMissing) {
    const auto document = doc(int32("a", 1));
    bson_utils::query_memory memory;
    ordinary_fields fields{document.view(), memory};
    fields.number("a");
    EXPECT_EQ(fields.number("b"), 0);
    EXPECT_FALSE(fields.ordinary());
}

TEST(OrdinaryFields, StayGivenUp) {
    const auto document = doc(int32("b", 1), int32("a", 2), int32("c", 3));
    bson_utils::query_memory memory;
    ordinary_fields fields{document.view(), memory};
    EXPECT_EQ(fields.number("a"), 0);
    EXPECT_EQ(fields.number("a"), 0);
    EXPECT_EQ(fields.text("c"), QString());
    EXPECT_FALSE(fields.ordinary());
}

TEST(OrdinaryFields, GiveUpDamagedBytes) {
    document_bytes cut = doc(int32("a", 1), string("b", "electricity"));
    cut.bytes.resize(cut.bytes.size() - 6);
    cut.bytes[0] = static_cast<char>(cut.bytes.size());
    cut.bytes.back() = '\0';
    bson_utils::query_memory memory;
    ordinary_fields fields{cut.view(), memory};
    fields.number("a");
    EXPECT_FALSE(fields.ordinary());
}

struct field {
    const char* name;
    element_bytes element;
    std::function<void(ordinary_fields&)> read;

    friend void PrintTo(const field& parameter, std::ostream* out) { *out << parameter.name; }
};

class StrangeField : public testing::TestWithParam<field> {};

TEST_P(StrangeField, IsGivenUp) {
    const auto document = doc(GetParam().element);
    bson_utils::query_memory memory;
    ordinary_fields fields{document.view(), memory};
    GetParam().read(fields);
    EXPECT_FALSE(fields.ordinary());
}

void readNumber(ordinary_fields& fields) {
    fields.number("a");
}
void readLocalSecs(ordinary_fields& fields) {
    fields.localSecs("a");
}
void readUtcSecs(ordinary_fields& fields) {
    fields.utcSecs("a");
}
void readText(ordinary_fields& fields) {
    fields.text("a");
}
void readHex(ordinary_fields& fields) {
    fields.hexBytes("a");
}
void readTime(ordinary_fields& fields) {
    fields.localTime("a");
}
void readOid(ordinary_fields& fields) {
    fields.oid("a");
}
void readObject(ordinary_fields& fields) {
    fields.object("a");
}
void readValue(ordinary_fields& fields) {
    fields.value("a");
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, StrangeField,
    testing::Values(field{"Int32AsInt64", int64("a", 1), readNumber},
                    field{"Int64AsInt32", int32("a", 1), readLocalSecs},
                    field{"ShortAbove32Bits", int64("a", 2147483648), readUtcSecs},
                    field{"ShortBelow32Bits", int64("a", -2147483649), readUtcSecs},
                    field{"TextAsNumber", int32("a", 1), readText},
                    field{"TextAsSymbol", symbol("a", "x"), readText},
                    field{"TextThatIsNoUtf8", string("a", "\xFF"), readText},
                    field{"TextOfOneStrayByte", string("a", "\x80"), readText},
                    field{"TextWithAByteOrderMark", string("a", "\xEF\xBB\xBFx"), readText},
                    field{"TextWithALongZero", string("a", "\xC0\x80"), readText},
                    field{"HexAsBinary", binary("a", "x"), readHex},
                    field{"HexBeyondAscii", string("a", "0aé"), readHex},
                    field{"DateAsNumber", int64("a", 1), readTime},
                    field{"DateThatADoubleRounds", date("a", 1LL << 53), readTime},
                    field{"EarlyDateThatADoubleRounds", date("a", -(1LL << 53)), readTime},
                    field{"OidAsText", string("a", "0123456789abcdef01234567"), readOid},
                    field{"ObjectAsArray", array("a", doc()), readObject},
                    field{"ObjectWithADate", embedded("a", doc(date("d", 1))), readObject},
                    field{"ValueThatIsNull", null("a"), readValue},
                    field{"ValueThatIsADate", date("a", 1), readValue},
                    field{"ValueThatIsADocument", embedded("a", doc()), readValue},
                    field{"ValueThatIsAnInt64", int64("a", 1), readValue},
                    field{"ValueThatIsNoNumber",
                          number("a", std::numeric_limits<double>::quiet_NaN()), readValue},
                    field{"ValueThatIsInfinite",
                          number("a", std::numeric_limits<double>::infinity()), readValue},
                    field{"ValueThatIsNoUtf8", string("a", "\xFF"), readValue}),
    [](const auto& test) { return std::string{test.param.name}; });

struct ordinary_value {
    const char* name;
    element_bytes element;
    QVariant value;

    friend void PrintTo(const ordinary_value& parameter, std::ostream* out) {
        *out << parameter.name;
    }
};

class OrdinaryValue : public testing::TestWithParam<ordinary_value> {};

TEST_P(OrdinaryValue, IsADoubleATextOrABoolean) {
    const auto document = doc(GetParam().element);
    bson_utils::query_memory memory;
    ordinary_fields fields{document.view(), memory};
    const QVariant value = fields.value("a");
    EXPECT_EQ(value.userType(), GetParam().value.userType());
    EXPECT_EQ(value, GetParam().value);
    EXPECT_TRUE(fields.ordinary());
}

INSTANTIATE_TEST_SUITE_P(Types, OrdinaryValue,
                         testing::Values(ordinary_value{"Double", number("a", 2.5), 2.5},
                                         ordinary_value{"Int32", int32("a", 5), 5.0},
                                         ordinary_value{"True", boolean("a", true), true},
                                         ordinary_value{"False", boolean("a", false), false},
                                         ordinary_value{"Text", string("a", "5"), "5"_q}),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
