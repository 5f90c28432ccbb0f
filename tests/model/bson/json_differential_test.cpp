// Writing JSON documents without their text against writing them by way of it, and reading nested
// documents by Qt's parser against inserting their members one by one. The seed is fixed, or taken
// from KELVRO_SEED; a failure prints it.

#include "model/bson/json_document.h"
#include "model/bson/json_text.h"
#include "model/bson/json_values.h"
#include "model/bson_utils.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/random_bson.h"
#include "tests/support/random_json.h"
#include "tests/support/random_seed.h"
#include "tests/support/raw_bson.h"

#include <gtest/gtest.h>

#include <QJsonDocument>

#include <cmath>
#include <limits>
#include <optional>
#include <random>
#include <string>

namespace {

using namespace test_support;
using namespace test_support::raw_bson;
using test_support::literals::operator""_q;

constexpr std::uint32_t documents = 20'000;

std::uint32_t firstSeed() {
    return randomSeed(20190324);
}

document_bytes byText(const QJsonObject& json) {
    return rawBson(bson_utils::writeText(QJsonDocument{json}));
}

std::optional<document_bytes> withoutText(const QJsonObject& json) {
    const auto document = bson_utils::writeOrdinary(QJsonDocument{json});
    return document ? std::optional{rawBson(*document)} : std::nullopt;
}

QJsonObject nested(int levels) {
    QJsonObject json{{"n"_q, 1}};
    for (int level = 1; level < levels; ++level) {
        json = {{"o"_q, json}};
    }
    return json;
}

// Equal also in what is only seen in the text: the kind of a number.
void expectSame(const QJsonObject& actual, const QJsonObject& expected) {
    EXPECT_EQ(actual, expected);
    EXPECT_EQ(QJsonDocument{actual}.toJson(), QJsonDocument{expected}.toJson());
}

TEST(JsonWithoutText, IsWrittenAsItsTextIsRead) {
    std::uint32_t written = 0;
    for (std::uint32_t seed = firstSeed(); seed < firstSeed() + documents; ++seed) {
        const QJsonObject json = random_content{seed}.object(4);
        if (const auto document = withoutText(json)) {
            ++written;
            ASSERT_EQ(*document, byText(json)) << "seed " << seed;
        }
    }
    EXPECT_GT(written, documents / 4) << "hardly anything was compared";
}

TEST(JsonWithoutText, TakesEveryPlainNumber) {
    for (const double number :
         {0.0, 1.0, -1.0, 0.1, -2.5, 2147483647.0, 2147483648.0, -2147483648.0, -2147483649.0,
          9007199254740991.0, -9007199254740991.0, 1e-280, 123456.789}) {
        const QJsonObject json{{"n"_q, number}};
        const auto document = withoutText(json);
        ASSERT_TRUE(document.has_value()) << number;
        EXPECT_EQ(*document, byText(json)) << number;
    }
}

TEST(JsonWithoutText, LeavesNumbersInDoubtToTheText) {
    for (const double number : {9007199254740992.0, -9007199254740992.0, 1e300, 5e-324, 1e-300}) {
        EXPECT_FALSE(withoutText({{"n"_q, number}})) << number;
    }
}

TEST(JsonWithoutText, LeavesWrappersToTheText) {
    EXPECT_FALSE(withoutText({{"when"_q, QJsonObject{{"$date"_q, 5}}}}));
    EXPECT_FALSE(withoutText({{"$unknown"_q, 5}}));
    EXPECT_FALSE(withoutText({{"list"_q, QJsonArray{QJsonObject{{"$oid"_q, "x"_q}}}}}));
}

TEST(JsonWithoutText, LeavesZerosAndSurrogatesToTheText) {
    EXPECT_FALSE(withoutText({{"text"_q, QString{QChar{0}}}}));
    EXPECT_FALSE(withoutText({{QString{QChar{0}}, 1}}));
    EXPECT_FALSE(withoutText({{"text"_q, QString{QChar{0xD800}}}}));
    EXPECT_FALSE(withoutText({{QString{}, 1}}));
}

QJsonObject nestedArrays(int levels) {
    QJsonArray json{1};
    for (int level = 2; level < levels; ++level) {
        json = QJsonArray{json};
    }
    return {{"a"_q, json}};
}

using nesting = QJsonObject (*)(int levels);

class Nesting : public testing::TestWithParam<nesting> {};

INSTANTIATE_TEST_SUITE_P(Kinds, Nesting, testing::Values(nesting{nested}, nesting{nestedArrays}));

TEST_P(Nesting, IsWrittenDirectlyForSomeLevelsAndEquallyForAll) {
    for (int levels = 2; levels < 98; ++levels) {
        const QJsonObject json = GetParam()(levels);
        const auto document = withoutText(json);
        EXPECT_EQ(document.has_value(), levels <= 65) << levels;
        if (document) {
            ASSERT_EQ(*document, byText(json)) << levels << " levels";
        }
    }
}

TEST_P(Nesting, IsReadDirectlyForSomeLevelsAndEquallyForAll) {
    for (int levels = 2; levels < 190; ++levels) {
        const auto document = bson_utils::toBson(GetParam()(levels));
        const auto object = bson_utils::ordinaryObject(document);
        EXPECT_EQ(object.has_value(), levels <= 101) << levels;
        if (object) {
            expectSame(*object, bson_utils::insertedObject(document));
            expectSame(*object, bson_utils::legacyObject(document));
        }
    }
}

TEST(OrdinaryObject, IsWhatTheOtherWaysGiveForJson) {
    std::uint32_t read = 0;
    for (std::uint32_t seed = firstSeed(); seed < firstSeed() + documents; ++seed) {
        const auto document = bson_utils::toBson(random_content{seed}.object(4));
        if (const auto object = bson_utils::ordinaryObject(document)) {
            ++read;
            expectSame(*object, bson_utils::insertedObject(document));
            expectSame(*object, bson_utils::legacyObject(document));
            ASSERT_FALSE(HasFailure()) << "seed " << seed;
        }
    }
    EXPECT_GT(read, documents / 4) << "hardly anything was compared";
}

TEST(OrdinaryObject, IsWhatTheOtherWaysGiveForStrangeDocuments) {
    std::mt19937_64 random{firstSeed()};
    std::uint32_t read = 0;
    for (std::uint32_t i = 0; i < documents; ++i) {
        const auto document = random_bson::generate(
            random, {{"a", random_bson::member::any}, {"b", random_bson::member::object}});
        const auto bytes = random_bson::bytesOf(document);
        if (const auto object = bson_utils::ordinaryObject(bytes.view())) {
            ++read;
            expectSame(*object, bson_utils::insertedObject(bytes.view()));
            expectSame(*object, bson_utils::legacyObject(bytes.view()));
            ASSERT_FALSE(HasFailure()) << "seed " << firstSeed() << ", document " << i;
        }
    }
    EXPECT_GT(read, documents / 20) << "hardly anything was compared";
}

TEST(OrdinaryObject, TakesNumbersAsInsertionDoes) {
    for (const double value : {0.0, 5.0, -0.0, 0.1, 1e15, 1e22, 1e300, 5e-324, 9007199254740993.0,
                               9223372036854775808.0, 18446744073709551616.0}) {
        const auto bytes = doc(number("n", value));
        const auto object = bson_utils::ordinaryObject(bytes.view());
        ASSERT_TRUE(object.has_value()) << value;
        expectSame(*object, bson_utils::insertedObject(bytes.view()));
    }
    for (const std::int64_t value : {std::int64_t{1} << 40, -(std::int64_t{1} << 52)}) {
        const auto bytes = doc(int64("n", value));
        const auto object = bson_utils::ordinaryObject(bytes.view());
        ASSERT_TRUE(object.has_value()) << value;
        expectSame(*object, bson_utils::insertedObject(bytes.view()));
    }
}

TEST(OrdinaryObject, LeavesToInsertionWhatTextCannotHold) {
    const auto refused = [](const element_bytes& element) {
        return !bson_utils::ordinaryObject(doc(element).view()).has_value();
    };
    EXPECT_TRUE(refused(number("n", std::numeric_limits<double>::quiet_NaN())));
    EXPECT_TRUE(refused(number("n", std::numeric_limits<double>::infinity())));
    EXPECT_TRUE(refused(int64("n", (std::int64_t{1} << 53) + 1)));
    EXPECT_TRUE(refused(string("\xC3\xA4", "x")));
    EXPECT_TRUE(refused(array("list", doc(int32("\xC0\x80", 1)))));
    EXPECT_TRUE(refused(string("text", "\xEF\xBB\xBFx")));
    EXPECT_TRUE(refused(string("text", "\xFF")));
    EXPECT_FALSE(refused(string("text", std::string(200, 'x'))));
    EXPECT_TRUE(refused(string("text", std::string(201, 'x'))));
    EXPECT_TRUE(refused(date("when", 5)));
    EXPECT_TRUE(refused(oid("id", "twelve bytes")));
}

} // namespace
