// The nested documents of one query: each must become what the plain way makes of it alone,
// whatever came before.

#include "model/bson/similar_objects.h"
#include "model/bson/json_text.h"
#include "model/bson/json_values.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/raw_bson.h"

#include <gtest/gtest.h>

#include <QJsonDocument>

#include <cmath>
#include <functional>
#include <limits>
#include <ostream>
#include <string>
#include <vector>

namespace {

using bson_utils::similar_objects;
using namespace test_support::raw_bson;
using test_support::literals::operator""_q;
using test_support::raw_bson::null;

/// What all three ways give, to the last bit and in the kinds of the numbers.
void expectPlain(const std::optional<QJsonObject>& object, const document_bytes& document) {
    const auto plain = bson_utils::ordinaryObject(document.view());
    if (!object) {
        EXPECT_FALSE(plain.has_value());
        return;
    }
    const auto inserted = bson_utils::insertedObject(document.view());
    EXPECT_EQ(*object, inserted);
    EXPECT_EQ(*object, bson_utils::legacyObject(document.view()));
    EXPECT_EQ(QJsonDocument{*object}.toJson(), QJsonDocument{inserted}.toJson());
    EXPECT_EQ(object->toVariantMap(), inserted.toVariantMap());
    EXPECT_EQ(object->keys(), inserted.keys());
    for (const QString& key : object->keys()) {
        const QJsonValue value = object->value(key);
        const QJsonValue expected = inserted.value(key);
        EXPECT_EQ(value.toVariant().userType(), expected.toVariant().userType());
        EXPECT_EQ(std::signbit(value.toDouble()), std::signbit(expected.toDouble()));
    }
}

/// Has seen enough to remember what comes next, but nothing of these tests.
similar_objects warm() {
    similar_objects objects;
    const auto other = doc(string("other", "once"));
    for (int i = 0; i < 8; ++i) {
        objects.object(other.view());
    }
    return objects;
}

void expectPlainInTurn(similar_objects& objects, const std::vector<document_bytes>& documents) {
    for (const document_bytes& document : documents) {
        SCOPED_TRACE(testing::PrintToString(document));
        expectPlain(objects.object(document.view()), document);
    }
}

/// Longer than what is shared whole.
element_bytes filling() {
    return string("z", std::string(80, 'z'));
}

struct pair {
    const char* name;
    document_bytes first;
    document_bytes second;

    friend void PrintTo(const pair& parameter, std::ostream* out) { *out << parameter.name; }
};

class Similar : public testing::TestWithParam<pair> {};

TEST_P(Similar, DocumentsAreReadAsEachAlone) {
    const auto& [name, first, second] = GetParam();
    auto objects = warm();
    expectPlainInTurn(objects, {first, second, first, second, second, first});
    auto others = warm();
    expectPlainInTurn(others, {second, first, second, first});
}

document_bytes with(const element_bytes& element) {
    return doc(string("a", "same"), element, filling());
}

constexpr double tiny = std::numeric_limits<double>::denorm_min();
constexpr std::int64_t wide = std::int64_t{1} << 53;

INSTANTIATE_TEST_SUITE_P(
    Pairs, Similar,
    testing::Values(
        pair{"OtherInt32", with(int32("n", 1)), with(int32("n", -2147483647 - 1))},
        pair{"OtherInt64", with(int64("n", 1)), with(int64("n", 4294967296))},
        pair{"WideInt64", with(int64("n", 1)), with(int64("n", wide))},
        pair{"WideNegativeInt64", with(int64("n", 1)), with(int64("n", -wide - 1))},
        pair{"OtherDouble", with(number("n", 1.5)), with(number("n", -2.25))},
        pair{"WholeDouble", with(number("n", 1.5)), with(number("n", 2))},
        pair{"NegativeZero", with(number("n", 1.5)), with(number("n", -0.0))},
        pair{"PositiveZero", with(number("n", 1.5)), with(number("n", 0.0))},
        pair{"TinyDouble", with(number("n", 1.5)), with(number("n", tiny))},
        pair{"WideDouble", with(number("n", 1.5)), with(number("n", 9007199254740994.0))},
        pair{"HugeDouble", with(number("n", 1.5)), with(number("n", 1e300))},
        pair{"NoNumber", with(number("n", 1.5)), with(number("n", std::nan("")))},
        pair{"Infinity", with(number("n", 1.5)),
             with(number("n", std::numeric_limits<double>::infinity()))},
        pair{"Int32ForDouble", with(number("n", 1.5)), with(int32("n", 2))},
        pair{"Int64ForInt32", with(int32("n", 1)), with(int64("n", 4294967296))},
        pair{"Boolean", with(boolean("b", true)), with(boolean("b", false))},
        pair{"NullForNumber", with(number("n", 1.5)), with(null("n"))},
        pair{"TextForNull", with(null("n")), with(string("n", "1.5"))},
        pair{"OtherText", with(string("t", "water")), with(string("t", "heat!"))},
        pair{"LongerText", with(string("t", "water")), with(string("t", std::string(150, 'x')))},
        pair{"VeryLongText", with(string("t", "water")), with(string("t", std::string(500, 'x')))},
        pair{"EmptyText", with(string("t", "water")), with(string("t", ""))},
        pair{"StrangeAscii", with(string("t", "water")),
             with(string("t", std::string{"\"\\/\b\f\n\r\t\x01\x7F\0x", 12}))},
        pair{"TextBeyondAscii", with(string("t", "water")), with(string("t", "Zähler"))},
        pair{"SameTextBeyondAscii", with(string("ä", "Zähler") + int32("n", 1)),
             with(string("ä", "Zähler") + int32("n", 2))},
        pair{"KeptTextBeyondAscii", with(string("t", "Zähler") + int32("n", 1)),
             with(string("t", "Zähler") + int32("n", 2))},
        pair{"TextThatIsNoUtf8", with(string("t", "water")), with(string("t", "\xFF"))},
        pair{"SameNested", with(embedded("d", doc(int32("n", 1))) + int32("n", 1)),
             with(embedded("d", doc(int32("n", 1))) + int32("n", 2))},
        pair{"OtherNested", with(embedded("d", doc(int32("n", 1)))),
             with(embedded("d", doc(int32("n", 2))))},
        pair{"OtherList", with(array("l", doc(int32("0", 1)))),
             with(array("l", doc(int32("0", 2))))},
        pair{"TwoNested",
             with(embedded("d", doc(int32("n", 1))) + embedded("e", doc(int32("n", 2)))),
             with(embedded("d", doc(int32("n", 3))) + embedded("e", doc(int32("n", 4))))},
        pair{"NestedTwice",
             with(embedded("d",
                           doc(int32("a", 1), embedded("e", doc(int32("n", 2))), int32("z", 3)))),
             with(embedded("d",
                           doc(int32("a", 4), embedded("e", doc(int32("n", 5))), int32("z", 6))))},
        pair{"NestedWithOtherKeys", with(embedded("d", doc(int32("n", 1)))),
             with(embedded("d", doc(int32("m", 1), boolean("n", true))))},
        pair{"NestedWithARepeatedKey", with(embedded("d", doc(int32("n", 1), int32("n", 2)))),
             with(embedded("d", doc(int32("n", 3), int32("n", 4))))},
        pair{"NestedWithAWideDouble", with(embedded("d", doc(number("n", 1.5)))),
             with(embedded("d", doc(number("n", 1e17))))},
        pair{"NestedWithADate", with(embedded("d", doc(int32("n", 1)))),
             with(embedded("d", doc(date("n", 1))))},
        pair{"NothingNested", with(embedded("d", doc(int32("n", 1)))), with(embedded("d", doc()))},
        pair{"LongerList", with(array("l", doc(int32("0", 1)))),
             with(array("l", doc(int32("0", 2), number("1", 2.5))))},
        pair{"EmptyList", with(array("l", doc(int32("0", 1)))), with(array("l", doc()))},
        pair{"ListOfDocuments", with(array("l", doc(embedded("0", doc(int32("n", 1)))))),
             with(array("l",
                        doc(embedded("0", doc(int32("n", 2))), embedded("1", doc(null("n"))))))},
        pair{"ListOfLists", with(array("l", doc(array("0", doc(int32("0", 1)))))),
             with(array("l", doc(array("0", doc(int32("0", 2), string("1", "x"))))))},
        pair{"ListWithStrangeKeys", with(array("l", doc(int32("0", 1)))),
             with(array("l", doc(int32("7", 1), int32("", 2))))},
        pair{"ListWithADate", with(array("l", doc(int32("0", 1)))),
             with(array("l", doc(date("0", 1))))},
        pair{"ListWithAWideNumber", with(array("l", doc(int64("0", 1)))),
             with(array("l", doc(int64("0", wide))))},
        pair{"LongList", with(array("l", doc(string("0", std::string(150, 'x'))))),
             with(array("l", doc(string("0", std::string(150, 'x')),
                                 string("1", std::string(150, 'y')))))},
        pair{"ListForDocument", with(embedded("l", doc(int32("0", 1)))),
             with(array("l", doc(int32("0", 1))))},
        pair{"Date", with(int64("t", 1)), with(date("t", 1))},
        pair{"ObjectId", with(string("o", "x")), with(oid("o", "twelve bytes"))},
        pair{"OtherKey", with(int32("m", 1)), with(int32("n", 1))},
        pair{"LongerKey", with(int32("n", 1)), with(int32("nn", 1))},
        pair{"OneMore", with(int32("m", 1)), with(int32("m", 2) + int32("n", 1))},
        pair{"OtherOrder", with(int32("m", 1) + int32("n", 2)),
             with(int32("n", 1) + int32("m", 2))},
        pair{"UnsortedKeys", with(int32("y", 1) + int32("b", 2) + int32("", 3)),
             with(int32("y", 4) + int32("b", 5) + int32("", 6))},
        pair{"RepeatedKey", with(int32("n", 1) + int32("n", 2)),
             with(int32("n", 3) + int32("n", 4))},
        pair{"RepeatedKeyFirstOther", with(int32("n", 1) + int32("n", 2)),
             with(int32("n", 3) + int32("n", 2))},
        pair{"Nothing", with(int32("n", 1)), doc()},
        pair{"SmallOnes", doc(string("unit", "kWh")), doc(string("unit", "m3"))},
        pair{"SmallOnesOfOneSize", doc(string("unit", "V")), doc(string("unit", "A"))}),
    [](const auto& test) { return std::string{test.param.name}; });

TEST(SimilarObjects, AreReadPlainlyWhereTheDocumentIsDamaged) {
    const auto whole = doc(string("text", "abc"), embedded("e", doc(int32("n", 1))),
                           number("d", 1.5), boolean("b", false), int32("i", 7), filling());
    // The length and the zero at the end are the library's to check.
    for (std::size_t at = 4; at < whole.bytes.size() - 1; ++at) {
        auto damaged = whole;
        damaged.bytes[at] = static_cast<char>(damaged.bytes[at] ^ 0x15);
        auto objects = warm();
        expectPlain(objects.object(whole.view()), whole);
        const auto object = objects.object(damaged.view());
        const auto plain = bson_utils::ordinaryObject(damaged.view());
        ASSERT_EQ(object.has_value(), plain.has_value()) << at;
        if (plain) {
            expectPlain(object, damaged);
        }
    }
}

// libbson renders 200 levels; beyond, the text does not parse.
TEST(SimilarObjects, AreRightForAnyNumberOfLevels) {
    auto objects = warm();
    auto document = doc(int32("level", 0), string("note", "innermost"));
    for (int level = 1; level < 250; ++level) {
        document = doc(int32("level", level), embedded("next", document));
        SCOPED_TRACE(level);
        expectPlain(objects.object(document.view()), document);
    }
}

TEST(SimilarObjects, StayAsTheyAreWhenOneIsChanged) {
    for (const auto& document : {doc(string("unit", "kWh")), with(int32("n", 1))}) {
        auto objects = warm();
        auto first = objects.object(document.view());
        auto changed = objects.object(document.view());
        changed->insert("unit"_q, 5);
        changed->insert("more"_q, 6);
        expectPlain(first, document);
        expectPlain(objects.object(document.view()), document);
    }
}

TEST(SimilarObjects, AreRightForMoreMakesThanAreRemembered) {
    auto objects = warm();
    for (int round = 0; round < 4; ++round) {
        for (int make = 0; make < 200; ++make) {
            const auto document =
                doc(int32("reading_" + std::to_string(make), round), number("n", make), filling());
            expectPlain(objects.object(document.view()), document);
        }
    }
}

TEST(SimilarObjects, AreRightWhenTheirTextsAndSizesChangeAllTheTime) {
    auto objects = warm();
    for (int i = 0; i < 2000; ++i) {
        const auto document =
            doc(string("id", std::to_string(7919 * i)), string("note", std::string(i % 70, 'n')),
                int32("count", i), filling());
        expectPlain(objects.object(document.view()), document);
    }
}

TEST(SimilarObjects, AreRightWhenNoneIsLikeAnother) {
    auto objects = warm();
    for (int i = 0; i < 1000; ++i) {
        const auto document = doc(int32("k" + std::to_string(i), i), filling());
        expectPlain(objects.object(document.view()), document);
    }
}

TEST(SimilarObjects, AreRightForLargeDocuments) {
    const auto large = [](int first) {
        std::string members;
        for (int i = 0; i < 2000; ++i) {
            members += int32("member_" + std::to_string(i), first + i);
        }
        return doc(members);
    };
    auto objects = warm();
    expectPlainInTurn(objects, {large(1), large(2), large(3)});
}

} // namespace
