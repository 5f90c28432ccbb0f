#include "model/field_lookup.h"

#include "tests/support/raw_bson.h"

#include <bsoncxx/v1/exception.hpp>
#include <bsoncxx/v1/types/view.hpp>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace std::string_view_literals;
using namespace test_support::raw_bson;
using bson_utils::field_lookup;

// Names of each other's beginnings, and the empty one.
constexpr std::array fields{"a"sv, "ab"sv, "abc"sv, "b"sv, ""sv, "z"sv};
using lookup = field_lookup<fields>;

TEST(FieldLookup, FindsFieldsInTheExpectedOrder) {
    const document_bytes document = doc(int32("a", 1), int32("ab", 2), int32("abc", 3),
                                        int32("b", 4), int32("", 5), int32("z", 6));
    const lookup found{document.view()};
    EXPECT_EQ(found["a"sv].get_int32().value, 1);
    EXPECT_EQ(found["ab"sv].get_int32().value, 2);
    EXPECT_EQ(found["abc"sv].get_int32().value, 3);
    EXPECT_EQ(found["b"sv].get_int32().value, 4);
    EXPECT_EQ(found[""sv].get_int32().value, 5);
    EXPECT_EQ(found["z"sv].get_int32().value, 6);
}

TEST(FieldLookup, FindsFieldsInTheReverseOrder) {
    const document_bytes document = doc(int32("z", 6), int32("", 5), int32("b", 4), int32("abc", 3),
                                        int32("ab", 2), int32("a", 1));
    const lookup found{document.view()};
    EXPECT_EQ(found["a"sv].get_int32().value, 1);
    EXPECT_EQ(found["ab"sv].get_int32().value, 2);
    EXPECT_EQ(found["abc"sv].get_int32().value, 3);
    EXPECT_EQ(found["b"sv].get_int32().value, 4);
    EXPECT_EQ(found[""sv].get_int32().value, 5);
    EXPECT_EQ(found["z"sv].get_int32().value, 6);
}

TEST(FieldLookup, PassesOverOtherFields) {
    const document_bytes document =
        doc(int32("x", 9), int32("a", 1), int32("abcd", 8), int32("ab", 2));
    const lookup found{document.view()};
    EXPECT_EQ(found["a"sv].get_int32().value, 1);
    EXPECT_EQ(found["ab"sv].get_int32().value, 2);
    EXPECT_FALSE(found["abc"sv]);
}

TEST(FieldLookup, TakesTheFirstOfARepeatedField) {
    const document_bytes document = doc(int32("b", 1), int32("a", 2), int32("b", 3), int32("a", 4));
    const lookup found{document.view()};
    EXPECT_EQ(found["b"sv].get_int32().value, 1);
    EXPECT_EQ(found["a"sv].get_int32().value, 2);
}

TEST(FieldLookup, IgnoresAFieldOfThatNameInANestedDocument) {
    const document_bytes document = doc(embedded("z", doc(int32("a", 1))));
    const lookup found{document.view()};
    EXPECT_FALSE(found["a"sv]);
}

TEST(FieldLookup, GivesAnInvalidElementForAMissingField) {
    const lookup found{doc().view()};
    EXPECT_FALSE(found["a"sv]);
    EXPECT_THROW(found["a"sv].get_int32(), bsoncxx::v1::exception);
}

TEST(FieldLookup, LeavesTheTypeToTheAccessor) {
    const document_bytes document = doc(int64("a", 1));
    const lookup found{document.view()};
    EXPECT_THROW(found["a"sv].get_int32(), bsoncxx::v1::exception);
    EXPECT_EQ(found["a"sv].get_int64().value, 1);
}

TEST(FieldLookup, ThrowsOnBytesThatAreNoDocument) {
    document_bytes damaged = doc(int32("a", 1));
    damaged.bytes[4] = '\x55';
    EXPECT_THROW(lookup{damaged.view()}, bsoncxx::v1::exception);
}

TEST(FieldLookup, ThrowsOnDamageBehindTheLastExpectedField) {
    document_bytes damaged = doc(int32("z", 1), int32("x", 2));
    damaged.bytes[11] = '\x55';
    EXPECT_THROW(lookup{damaged.view()}, bsoncxx::v1::exception);
}

/// What the lookup must equal: one plain search a field.
void expectAsAPlainSearch(const document_bytes& document) {
    const bsoncxx::v1::document::view view = document.view();
    const lookup found{view};
    const auto expectOne = [&](lookup::name name, std::string_view text) {
        const auto expected = view[text];
        ASSERT_EQ(static_cast<bool>(found[name]), static_cast<bool>(expected))
            << '"' << text << '"';
        if (expected) {
            EXPECT_EQ(found[name].offset(), expected.offset()) << '"' << text << '"';
            EXPECT_EQ(std::string_view{found[name].key()}, text);
            EXPECT_TRUE(found[name].type_view() == expected.type_view()) << '"' << text << '"';
        }
    };
    [&]<std::size_t... Index>(std::index_sequence<Index...>) {
        (expectOne(lookup::name{fields[Index]}, fields[Index]), ...);
    }(std::make_index_sequence<fields.size()>{});
}

TEST(FieldLookup, AgreesWithAPlainSearchOnRandomDocuments) {
    constexpr std::array names{"a"sv, "ab"sv, "abc"sv, "b"sv, ""sv, "z"sv, "x"sv, "abcd"sv, "A"sv};
    for (std::uint32_t seed = 0; seed < 2000; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random{seed};
        std::vector<std::string_view> chosen;
        for (const std::string_view name : names) {
            // None, one or, now and then, two of each.
            chosen.insert(chosen.end(), std::array{0U, 1U, 1U, 1U, 2U}[random() % 5], name);
        }
        if (random() % 2 == 0) {
            std::ranges::shuffle(chosen, random);
        }
        std::string elements;
        for (std::size_t index = 0; index < chosen.size(); ++index) {
            const int value = static_cast<int>(index);
            elements += random() % 2 == 0 ? int32(chosen[index], value)
                                          : string(chosen[index], std::to_string(value));
        }
        const document_bytes document = doc(elements);
        expectAsAPlainSearch(document);
        if (HasFailure()) {
            FAIL() << testing::PrintToString(document);
        }
    }
}

} // namespace
