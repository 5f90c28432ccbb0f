// Writing JSON documents without their text against writing them by way of it, and reading nested
// documents by Qt's parser against inserting their members one by one. The seed is fixed, or taken
// from KELVRO_SEED; a failure prints it.

#include "model/bson_utils.h"
#include "model/json_parsing.h"
#include "model/json_typing.h"
#include "tests/model/random_bson.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/random_json.h"
#include "tests/support/raw_bson.h"

#include <bsoncxx/v1/element/view.hpp>
#include <bsoncxx/v1/types/id.hpp>
#include <bsoncxx/v1/types/view.hpp>

#include <gtest/gtest.h>

#include <QJsonDocument>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <optional>
#include <random>
#include <string>

namespace {

using namespace test_support;
using namespace test_support::raw_bson;
using bson_utils::bson_builder;
using test_support::literals::operator""_q;

constexpr std::uint32_t documents = 20'000;

std::uint32_t firstSeed() {
    const char* chosen = std::getenv("KELVRO_SEED");
    return chosen != nullptr ? static_cast<std::uint32_t>(std::strtoul(chosen, nullptr, 0))
                             : 20190324;
}

document_bytes byText(const QJsonObject& json) {
    const QByteArray text = QJsonDocument{json}.toJson(QJsonDocument::Compact);
    bson_builder document;
    document.readJson({text.constData(), static_cast<std::size_t>(text.size())});
    return rawBson(document.take());
}

std::optional<document_bytes> withoutText(const QJsonObject& json) {
    bson_builder document;
    return bson_utils::appendAsTextWouldRead(document, json)
               ? std::optional{rawBson(document.take())}
               : std::nullopt;
}

QJsonObject nested(int levels) {
    QJsonObject json{{"n"_q, 1}};
    for (int level = 1; level < levels; ++level) {
        json = {{"o"_q, json}};
    }
    return json;
}

QJsonObject inserted(const bsoncxx::v1::document::view& document);

QJsonValue insertedValue(const bsoncxx::v1::element::view& element) {
    switch (element.type_id()) {
    case bsoncxx::v1::types::id::k_document:
        return inserted(element.get_document().value);
    case bsoncxx::v1::types::id::k_array: {
        QJsonArray array;
        for (const auto& child : element.get_array().value) {
            array.append(insertedValue(child));
        }
        return array;
    }
    default:
        return bson_utils::fromBsonOther(element);
    }
}

QJsonObject inserted(const bsoncxx::v1::document::view& document) {
    QJsonObject json;
    for (const auto& element : document) {
        const auto key = element.key();
        json.insert(QString::fromLatin1(key.data(), static_cast<int>(key.size())),
                    insertedValue(element));
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

TEST(JsonWithoutText, TakesAsManyLevelsAsTheTextAllows) {
    for (int levels = 1; levels < 120; ++levels) {
        const QJsonObject json = nested(levels);
        if (const auto document = withoutText(json)) {
            ASSERT_EQ(*document, byText(json)) << levels << " levels";
        } else {
            EXPECT_GT(levels, 60);
        }
    }
}

TEST(ParsedObject, IsWhatInsertionGivesForJson) {
    std::uint32_t read = 0;
    for (std::uint32_t seed = firstSeed(); seed < firstSeed() + documents; ++seed) {
        const auto document = bson_utils::toBson(random_content{seed}.object(4));
        if (const auto object = bson_utils::parsedObject(document)) {
            ++read;
            expectSame(*object, inserted(document));
            ASSERT_FALSE(HasFailure()) << "seed " << seed;
        }
    }
    EXPECT_GT(read, documents / 4) << "hardly anything was compared";
}

TEST(ParsedObject, IsWhatInsertionGivesForStrangeDocuments) {
    std::mt19937_64 random{firstSeed()};
    std::uint32_t read = 0;
    for (std::uint32_t i = 0; i < documents; ++i) {
        const auto document = random_bson::generate(
            random, {{"a", random_bson::member::any}, {"b", random_bson::member::object}});
        const auto bytes = random_bson::bytesOf(document);
        if (const auto object = bson_utils::parsedObject(bytes.view())) {
            ++read;
            expectSame(*object, inserted(bytes.view()));
            ASSERT_FALSE(HasFailure()) << "seed " << firstSeed() << ", document " << i;
        }
    }
    EXPECT_GT(read, documents / 10) << "hardly anything was compared";
}

TEST(ParsedObject, TakesNumbersAsInsertionDoes) {
    for (const double value : {0.0, 5.0, -0.0, 0.1, 1e15, 1e22, 1e300, 5e-324, 9007199254740993.0,
                               9223372036854775808.0, 18446744073709551616.0}) {
        const auto bytes = doc(number("n", value));
        const auto object = bson_utils::parsedObject(bytes.view());
        ASSERT_TRUE(object.has_value()) << value;
        expectSame(*object, inserted(bytes.view()));
    }
    for (const std::int64_t value : {std::int64_t{1} << 40, -(std::int64_t{1} << 52)}) {
        const auto bytes = doc(int64("n", value));
        const auto object = bson_utils::parsedObject(bytes.view());
        ASSERT_TRUE(object.has_value()) << value;
        expectSame(*object, inserted(bytes.view()));
    }
}

TEST(ParsedObject, LeavesToInsertionWhatTextCannotHold) {
    const auto refused = [](const element_bytes& element) {
        return !bson_utils::parsedObject(doc(element).view()).has_value();
    };
    EXPECT_TRUE(refused(number("n", std::numeric_limits<double>::quiet_NaN())));
    EXPECT_TRUE(refused(number("n", std::numeric_limits<double>::infinity())));
    EXPECT_TRUE(refused(int64("n", (std::int64_t{1} << 53) + 1)));
    EXPECT_TRUE(refused(string("\xC3\xA4", "x")));
    EXPECT_TRUE(refused(string("text", "\xEF\xBB\xBFx")));
    EXPECT_TRUE(refused(string("text", "\xFF")));
    EXPECT_TRUE(refused(string("text", std::string(201, 'x'))));
}

} // namespace
