// The walk through a document of which the keys are known.

#include "model/bson/element_walk.h"
#include "tests/support/raw_bson.h"

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

namespace {

using bson_utils::element_walk;
using namespace test_support::raw_bson;
using test_support::raw_bson::null;

TEST(ElementWalk, GivesEachValueByItsType) {
    const auto nested = doc(int32("n", 1));
    const auto document =
        doc(number("d", 2.5), string("s", std::string{"a\0b", 3}), embedded("e", nested),
            array("l", doc(boolean("0", true))), oid("o", "twelve bytes"), boolean("b", true),
            date("t", -3), null("z"), int32("i", -5), int64("w", -(1LL << 40)));
    element_walk element{document.view()};

    ASSERT_TRUE(element.next("d"));
    EXPECT_EQ(element.type(), BSON_TYPE_DOUBLE);
    EXPECT_EQ(element.real(), 2.5);
    ASSERT_TRUE(element.next("s"));
    EXPECT_EQ(element.type(), BSON_TYPE_UTF8);
    EXPECT_EQ(element.utf8(), (std::string{"a\0b", 3}));
    ASSERT_TRUE(element.next("e"));
    EXPECT_EQ(element.type(), BSON_TYPE_DOCUMENT);
    EXPECT_EQ(rawBson(element.document()), nested);
    ASSERT_TRUE(element.next("l"));
    EXPECT_EQ(element.type(), BSON_TYPE_ARRAY);
    ASSERT_TRUE(element.next("o"));
    EXPECT_EQ(element.type(), BSON_TYPE_OID);
    EXPECT_EQ(element.bytes(), "twelve bytes");
    ASSERT_TRUE(element.next("b"));
    EXPECT_EQ(element.type(), BSON_TYPE_BOOL);
    EXPECT_TRUE(element.boolean());
    ASSERT_TRUE(element.next("t"));
    EXPECT_EQ(element.type(), BSON_TYPE_DATE_TIME);
    EXPECT_EQ(element.int64(), -3);
    ASSERT_TRUE(element.next("z"));
    EXPECT_EQ(element.type(), BSON_TYPE_NULL);
    EXPECT_EQ(element.bytes(), "");
    ASSERT_TRUE(element.next("i"));
    EXPECT_EQ(element.type(), BSON_TYPE_INT32);
    EXPECT_EQ(element.int32(), -5);
    EXPECT_FALSE(element.atEnd());
    ASSERT_TRUE(element.next("w"));
    EXPECT_EQ(element.type(), BSON_TYPE_INT64);
    EXPECT_EQ(element.int64(), -(1LL << 40));
    EXPECT_TRUE(element.atEnd());
}

TEST(ElementWalk, IsOverAtAnotherKey) {
    for (const char* key : {"b", "", "ab", "aa"}) {
        const auto document = doc(int32("a", 1));
        element_walk element{document.view()};
        EXPECT_FALSE(element.next(key)) << key;
        EXPECT_FALSE(element.next("a")) << key;
        EXPECT_FALSE(element.atEnd()) << key;
    }
}

TEST(ElementWalk, IsOverBehindTheLastElement) {
    const auto document = doc(int32("a", 1));
    element_walk element{document.view()};
    ASSERT_TRUE(element.next("a"));
    ASSERT_TRUE(element.atEnd());
    EXPECT_FALSE(element.next("a"));
    EXPECT_FALSE(element.atEnd());
}

TEST(ElementWalk, IsAtTheEndOfAnEmptyDocument) {
    EXPECT_TRUE(element_walk{doc().view()}.atEnd());
}

struct strange_element {
    const char* name;
    element_bytes element;

    friend void PrintTo(const strange_element& parameter, std::ostream* out) {
        *out << parameter.name;
    }
};

class StrangeElement : public testing::TestWithParam<strange_element> {};

TEST_P(StrangeElement, EndsTheWalk) {
    const auto document = doc(int32("a", 1), GetParam().element, int32("c", 3));
    element_walk element{document.view()};
    ASSERT_TRUE(element.next("a"));
    EXPECT_FALSE(element.next("b"));
    EXPECT_FALSE(element.next("c"));
    EXPECT_FALSE(element.atEnd());
}

element_bytes raw(unsigned char type, std::string_view value) {
    return detail::element(type, "b", value);
}

using namespace std::string_view_literals;

INSTANTIATE_TEST_SUITE_P(
    Kinds, StrangeElement,
    testing::Values(strange_element{"Timestamp", timestamp("b", 1)},
                    strange_element{"Symbol", symbol("b", "")},
                    strange_element{"NoType", raw(0x00, "")},
                    strange_element{"BooleanOfTwo", raw(0x08, "\2")},
                    strange_element{"TextWithoutItsZero", raw(0x02, "\2\0\0\0xy"sv)},
                    strange_element{"TextOfNoBytes", raw(0x02, "\0\0\0\0"sv)},
                    strange_element{"TextOfTooManyBytes", raw(0x02, "\x7F\0\0\0x\0"sv)},
                    strange_element{"TextOfNegativeLength", raw(0x02, "\xFF\xFF\xFF\xFFx\0"sv)},
                    strange_element{"DocumentOfFourBytes", raw(0x03, "\4\0\0\0\0"sv)},
                    strange_element{"DocumentWithoutItsZero", raw(0x03, "\5\0\0\0\1"sv)},
                    strange_element{"ArrayWithoutItsZero", raw(0x04, "\5\0\0\0\1"sv)},
                    strange_element{"DocumentOfTooManyBytes", raw(0x03, "\x7F\0\0\0\0"sv)},
                    strange_element{"DocumentOfNegativeLength", raw(0x03, "\xFF\xFF\xFF\xFF\0"sv)},
                    strange_element{"ArrayOfTooManyBytes", raw(0x04, "\x7F\0\0\0\0"sv)}),
    [](const auto& test) { return std::string{test.param.name}; });

// Each in a block of its own size, where the sanitizer sees a byte too many.
TEST(ElementWalk, ReadsNothingOutsideADamagedDocument) {
    const auto whole = doc(string("text", "abc"), embedded("e", doc()), number("d", 1),
                           boolean("b", false), int32("i", 7), int64("w", 8), null("z"));
    for (std::size_t size = 5; size <= whole.bytes.size(); ++size) {
        const auto block = std::make_unique<std::uint8_t[]>(size);
        std::copy_n(whole.bytes.begin(), size, block.get());
        block[0] = static_cast<std::uint8_t>(size);
        block[size - 1] = 0;
        element_walk element{{block.get(), size}};
        for (const char* key : {"text", "e", "d", "b", "i", "w", "z"}) {
            element.next(key);
        }
        EXPECT_EQ(element.atEnd(), size == whole.bytes.size()) << size;
    }
}

} // namespace
