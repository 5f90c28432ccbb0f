#include "model/bson/bson_builder.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/raw_bson.h"
#include "tests/support/record_samples.h"

#include <bsoncxx/v1/exception.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/mman.h>

#include <functional>
#include <limits>
#include <stdexcept>
#include <string>

namespace {

using bson_utils::bson_builder;
using namespace test_support::literals;
using namespace test_support::raw_bson;
using namespace std::string_literals;
using test_support::utcMsecs;
using testing::HasSubstr;
using testing::Not;

const std::string idBytes = "\x01\x23\x45\x67\x89\xab\xcd\xef\x01\x23\x45\x67";

bsoncxx::v1::oid sampleOid() {
    return {reinterpret_cast<const std::uint8_t*>(idBytes.data()), idBytes.size()};
}

TEST(BsonBuilder, WithoutElementsGivesFiveBytes) {
    EXPECT_EQ(rawBson(bson_builder{}.take()), doc());
}

TEST(BsonBuilder, WritesEachKindOfElementInTheOrderOfTheCalls) {
    bson_builder builder;
    builder.appendInt64("z", 1);
    builder.appendBool("y", true);
    builder.appendInt32("x", -2);
    builder.appendDouble("w", 2.5);
    builder.appendUtf8("v", "text");
    builder.appendString("u", "\xc3\xa9"_q);
    builder.appendDate("t", utcMsecs(-1));
    builder.appendOid("s", sampleOid());
    EXPECT_EQ(rawBson(builder.take()),
              doc(int64("z", 1), boolean("y", true), int32("x", -2), number("w", 2.5),
                  string("v", "text"), string("u", "\xc3\xa9"), date("t", -1), oid("s", idBytes)));
}

TEST(BsonBuilder, WritesIntegersAtTheirLimits) {
    bson_builder builder;
    builder.appendInt32("a", std::numeric_limits<std::int32_t>::min());
    builder.appendInt64("b", std::numeric_limits<std::int64_t>::min());
    builder.appendDate("c", utcMsecs(std::numeric_limits<std::int64_t>::max()));
    EXPECT_EQ(rawBson(builder.take()), doc(int32("a", std::numeric_limits<std::int32_t>::min()),
                                           int64("b", std::numeric_limits<std::int64_t>::min()),
                                           date("c", std::numeric_limits<std::int64_t>::max())));
}

TEST(BsonBuilder, KeepsARepeatedKeyTwice) {
    bson_builder builder;
    builder.appendInt32("a", 1);
    builder.appendInt32("a", 2);
    EXPECT_EQ(rawBson(builder.take()), doc(int32("a", 1), int32("a", 2)));
}

TEST(BsonBuilder, TakesAnEmptyKey) {
    bson_builder builder;
    builder.appendInt32("", 1);
    EXPECT_EQ(rawBson(builder.take()), doc(int32("", 1)));
}

TEST(BsonBuilder, UsesOnlyTheKeysOwnCharacters) {
    const std::string_view longer = "keyword";
    bson_builder builder;
    builder.appendInt32(longer.substr(0, 3), 1);
    builder.appendUtf8("k", longer.substr(3));
    EXPECT_EQ(rawBson(builder.take()), doc(int32("key", 1), string("k", "word")));
}

TEST(BsonBuilder, WritesEmptyTexts) {
    bson_builder builder;
    builder.appendUtf8("a", "");
    builder.appendString("c", QString{});
    EXPECT_EQ(rawBson(builder.take()), doc(string("a", ""), string("c", "")));
}

TEST(BsonBuilder, KeepsZeroCharactersInTexts) {
    bson_builder builder;
    builder.appendUtf8("a", "x\0y"s);
    builder.appendString("b", "\0"_q);
    EXPECT_EQ(rawBson(builder.take()), doc(string("a", "x\0y"s), string("b", "\0"s)));
}

TEST(BsonBuilder, CopiesAFinishedDocument) {
    const document_bytes finished = doc(int32("n", 1), null("m"));
    bson_builder builder;
    builder.appendDocument("a", finished.view());
    builder.appendInt32("b", 2);
    EXPECT_EQ(rawBson(builder.take()), doc(embedded("a", finished), int32("b", 2)));
}

TEST(BsonBuilder, RefusesToCopyWhatIsNoDocument) {
    document_bytes damaged = doc(int32("n", 1));
    damaged.bytes.back() = 'x';
    bson_builder builder;
    builder.appendInt32("b", 2);
    EXPECT_THROW(builder.appendDocument("a", damaged.view()), bsoncxx::v1::exception);
    EXPECT_EQ(rawBson(builder.take()), doc(int32("b", 2)));
}

TEST(BsonBuilder, FillsNestedDocumentsAndArraysInPlace) {
    bson_builder builder;
    builder.appendInt32("before", 1);
    builder.appendDocument("d", [](bson_builder& document) {
        document.appendArray("l", [](bson_builder& array) {
            array.appendInt32("0", 7);
            array.appendDocument("1", [](bson_builder&) {});
        });
        document.appendBool("b", false);
    });
    builder.appendArray("empty", [](bson_builder&) {});
    builder.appendInt32("after", 2);
    EXPECT_EQ(rawBson(builder.take()),
              doc(int32("before", 1),
                  embedded("d", doc(array("l", doc(int32("0", 7), embedded("1", doc()))),
                                    boolean("b", false))),
                  array("empty", doc()), int32("after", 2)));
}

TEST(BsonBuilder, GrowsWithALongNestedText) {
    const std::string text(100'000, 'x');
    bson_builder builder;
    builder.appendDocument("d", [&](bson_builder& document) {
        document.appendDocument("e", [&](bson_builder& inner) { inner.appendUtf8("t", text); });
        document.appendUtf8("u", text);
    });
    builder.appendInt32("after", 2);
    EXPECT_EQ(rawBson(builder.take()),
              doc(embedded("d", doc(embedded("e", doc(string("t", text))), string("u", text))),
                  int32("after", 2)));
}

TEST(BsonBuilder, IsEmptyAndUsableAfterItsDocumentWasTaken) {
    bson_builder builder;
    builder.appendInt32("a", 1);
    const auto first = builder.take();
    EXPECT_EQ(rawBson(builder.take()), doc());
    builder.appendInt32("b", 2);
    EXPECT_EQ(rawBson(builder.take()), doc(int32("b", 2)));
    EXPECT_EQ(rawBson(first), doc(int32("a", 1)));
}

TEST(BsonBuilder, HandsOverAnArrayWithTheSameBytes) {
    bson_builder builder;
    builder.appendInt32("0", 1);
    EXPECT_EQ(rawBson(builder.takeArray()), doc(int32("0", 1)));
    EXPECT_EQ(rawBson(builder.takeArray()), doc());
}

struct keyed_append {
    const char* name;
    std::function<void(bson_builder&, std::string_view)> append;

    friend void PrintTo(const keyed_append& parameter, std::ostream* out) {
        *out << parameter.name;
    }
};

class BsonBuilderKey : public testing::TestWithParam<keyed_append> {};

// A key ends at its first zero: written as it is, the rest of it would be read as the value.
TEST_P(BsonBuilderKey, IsRefusedWithAZeroInIt) {
    bson_builder builder;
    builder.appendInt32("a", 1);
    EXPECT_THROW(GetParam().append(builder, "x\0y"s), bsoncxx::v1::exception);
    EXPECT_THROW(GetParam().append(builder, "\0"s), bsoncxx::v1::exception);
    builder.appendInt32("b", 2);
    EXPECT_EQ(rawBson(builder.take()), doc(int32("a", 1), int32("b", 2)));
}

INSTANTIATE_TEST_SUITE_P(
    OfEachKind, BsonBuilderKey,
    testing::Values(
        keyed_append{"Bool", [](auto& b, auto key) { b.appendBool(key, true); }},
        keyed_append{"Int32", [](auto& b, auto key) { b.appendInt32(key, 1); }},
        keyed_append{"Int64", [](auto& b, auto key) { b.appendInt64(key, 1); }},
        keyed_append{"Double", [](auto& b, auto key) { b.appendDouble(key, 1.0); }},
        keyed_append{"Utf8", [](auto& b, auto key) { b.appendUtf8(key, "t"); }},
        keyed_append{"String", [](auto& b, auto key) { b.appendString(key, "t"_q); }},
        keyed_append{"Date", [](auto& b, auto key) { b.appendDate(key, utcMsecs(1)); }},
        keyed_append{"Oid", [](auto& b, auto key) { b.appendOid(key, sampleOid()); }},
        keyed_append{"CopiedDocument",
                     [](auto& b, auto key) { b.appendDocument(key, doc().view()); }},
        keyed_append{"NestedDocument",
                     [](auto& b, auto key) { b.appendDocument(key, [](bson_builder&) {}); }},
        keyed_append{"NestedArray",
                     [](auto& b, auto key) { b.appendArray(key, [](bson_builder&) {}); }}),
    [](const auto& test) { return std::string{test.param.name}; });

TEST(BsonBuilder, StaysWellFormedWhenFillingANestedDocumentThrows) {
    bson_builder builder;
    EXPECT_THROW(builder.appendDocument("d",
                                        [](bson_builder& document) {
                                            document.appendInt32("ok", 1);
                                            document.appendInt32("x\0y"s, 2);
                                        }),
                 bsoncxx::v1::exception);
    builder.appendInt32("after", 3);
    EXPECT_EQ(rawBson(builder.take()), doc(embedded("d", doc(int32("ok", 1))), int32("after", 3)));
}

TEST(BsonBuilder, LetsAnExceptionOfTheFillingPass) {
    bson_builder builder;
    EXPECT_THROW(builder.appendArray("l",
                                     [](bson_builder& array) {
                                         array.appendDocument("0", [](bson_builder&) {
                                             throw std::length_error("of the caller");
                                         });
                                     }),
                 std::length_error);
    EXPECT_EQ(rawBson(builder.take()), doc(array("l", doc(embedded("0", doc())))));
}

TEST(BsonBuilder, ReadsJsonInPlaceOfItsContent) {
    bson_builder builder;
    builder.appendInt32("gone", 1);
    builder.readJson(R"({"a": 1})");
    EXPECT_EQ(rawBson(builder.take()), doc(int32("a", 1)));
}

TEST(BsonBuilder, AppendsToWhatItReadFromJson) {
    bson_builder builder;
    builder.readJson(R"({"a": 1})");
    builder.appendInt32("b", 2);
    EXPECT_EQ(rawBson(builder.take()), doc(int32("a", 1), int32("b", 2)));
}

struct rejected_json {
    const char* name;
    const char* text;

    friend void PrintTo(const rejected_json& parameter, std::ostream* out) {
        *out << parameter.name;
    }
};

class BsonBuilderRejectedJson : public testing::TestWithParam<rejected_json> {};

TEST_P(BsonBuilderRejectedJson, LeavesItEmptyAndUsable) {
    bson_builder builder;
    builder.appendInt32("gone", 1);
    EXPECT_THROW(builder.readJson(GetParam().text), bsoncxx::v1::exception);
    builder.appendInt32("b", 2);
    EXPECT_EQ(rawBson(builder.take()), doc(int32("b", 2)));
}

INSTANTIATE_TEST_SUITE_P(
    Texts, BsonBuilderRejectedJson,
    testing::Values(rejected_json{"LoneBrace", "{"}, rejected_json{"KeyAlone", R"({"a")"},
                    rejected_json{"NoEnd", R"({"a": 1)"}, rejected_json{"NoValue", R"({"a": })"},
                    rejected_json{"Nonsense", "nonsense"},
                    rejected_json{"ObjectIdOfThreeLetters", R"({"a": {"$oid": "xyz"}})"},
                    rejected_json{"InvalidUtf8", "{\"a\": \"\xff\"}"},
                    rejected_json{"ZeroInAKey", R"({"a\u0000b": 1})"}),
    [](const auto& test) { return std::string{test.param.name}; });

TEST(BsonBuilder, SaysWhyJsonWasRejected) {
    bson_builder builder;
    try {
        builder.readJson(R"({"a": {"$oid": "xyz"}})");
        FAIL() << "the text was accepted";
    } catch (const std::runtime_error& error) {
        EXPECT_THAT(error.what(), HasSubstr("JSON text that cannot become BSON"));
        EXPECT_THAT(error.what(), HasSubstr("Invalid input string \"xyz\", looking for OID"));
        EXPECT_THAT(error.what(), HasSubstr(R"({"a": {"$oid": "xyz"}})"));
    }
}

TEST(BsonBuilder, QuotesOnlyTheBeginningOfALongRejectedJson) {
    bson_builder builder;
    try {
        builder.readJson("{\"a\": \"" + std::string(1000, 'x'));
        FAIL() << "the text was accepted";
    } catch (const bsoncxx::v1::exception& error) {
        EXPECT_THAT(error.what(), HasSubstr("{\"a\": \"" + std::string(93, 'x')));
        EXPECT_THAT(error.what(), Not(HasSubstr(std::string(94, 'x'))));
    }
}

TEST(BsonBuilder, NamesTheKeyThatItRefuses) {
    bson_builder builder;
    document_bytes damaged = doc(int32("n", 1));
    damaged.bytes.back() = 'x';
    try {
        builder.appendDocument("the key", damaged.view());
        FAIL() << "the document was accepted";
    } catch (const bsoncxx::v1::exception& error) {
        EXPECT_THAT(error.what(), HasSubstr("the key"));
    }
}

/// Text beyond the lengths that BSON can count; its pages are never touched, so it costs no memory.
class gigantic_text {
public:
    gigantic_text()
        : m_address(
              mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {
        if (m_address == MAP_FAILED) {
            throw std::runtime_error("cannot map 2 GiB of address space");
        }
    }
    ~gigantic_text() { munmap(m_address, size); }

    gigantic_text(const gigantic_text&) = delete;
    gigantic_text& operator=(const gigantic_text&) = delete;

    std::string_view view() const { return {static_cast<const char*>(m_address), size}; }

    static constexpr std::size_t size =
        static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max()) + 1;

private:
    void* m_address;
};

TEST(BsonBuilder, RefusesTextsBeyondTheFormatsLimit) {
    const gigantic_text gigantic;
    bson_builder builder;
    builder.appendInt32("a", 1);
    EXPECT_THROW(builder.appendUtf8("t", gigantic.view()), bsoncxx::v1::exception);
    EXPECT_THROW(builder.appendInt32(gigantic.view(), 1), bsoncxx::v1::exception);
    EXPECT_EQ(rawBson(builder.take()), doc(int32("a", 1)));
}

TEST(BsonBuilder, RefusesJsonBeyondTheFormatsLimitAndStaysUsable) {
    const gigantic_text gigantic;
    bson_builder builder;
    builder.appendUtf8("a", std::string(1000, 'x'));
    EXPECT_THROW(builder.readJson(gigantic.view()), bsoncxx::v1::exception);
    EXPECT_EQ(rawBson(builder.take()), doc(string("a", std::string(1000, 'x'))));
}

TEST(BsonBuilder, TakesAViewWithoutDataForAnEmptyText) {
    bson_builder builder;
    builder.appendUtf8("b", {});
    EXPECT_EQ(rawBson(builder.take()), doc(string("b", "")));
}

TEST(BsonBuilder, NamesTheWholeKeyThatItRefuses) {
    bson_builder builder;
    try {
        builder.appendInt32("a\0b"s, 1);
        FAIL() << "the key was accepted";
    } catch (const bsoncxx::v1::exception& error) {
        EXPECT_THAT(error.what(), HasSubstr(R"(the key "a\0b" in a document of 5 bytes)"));
    }
}

} // namespace
