// The hand-written BSON that every expectation is made of, against bytes written out in full.

#include "tests/support/raw_bson.h"
#include "tests/support/qt_literals.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace test_support::raw_bson;
using namespace std::string_literals;
using testing::HasSubstr;

TEST(RawBson, WritesTheEmptyDocument) {
    EXPECT_EQ(doc().bytes, "\x05\x00\x00\x00\x00"s);
}

TEST(RawBson, WritesAString) {
    EXPECT_EQ(doc(string("hello", "world")).bytes,
              "\x16\x00\x00\x00\x02hello\x00\x06\x00\x00\x00world\x00\x00"s);
}

TEST(RawBson, WritesAnArrayOfThreeTypes) {
    EXPECT_EQ(
        doc(array("BSON", doc(string("0", "awesome"), number("1", 5.05), int32("2", 1986)))).bytes,
        "\x31\x00\x00\x00\x04"
        "BSON\x00\x26\x00\x00\x00"
        "\x02\x30\x00\x08\x00\x00\x00"
        "awesome\x00"
        "\x01\x31\x00\x33\x33\x33\x33\x33\x33\x14\x40"
        "\x10\x32\x00\xc2\x07\x00\x00\x00\x00"s);
}

TEST(RawBson, WritesIntegersLittleEndian) {
    EXPECT_EQ(int32("a", 0x01020304), "\x10"s + "a\0\x04\x03\x02\x01"s);
    EXPECT_EQ(int64("a", -2), "\x12"s + "a\0\xfe\xff\xff\xff\xff\xff\xff\xff"s);
    EXPECT_EQ(date("a", 1), "\x09"s + "a\0\x01\0\0\0\0\0\0\0"s);
}

TEST(RawBson, WritesWhatHasNoValue) {
    EXPECT_EQ(undefined("a"), "\x06"s + "a\0"s);
    EXPECT_EQ(null("a"), "\x0a"s + "a\0"s);
    EXPECT_EQ(minKey("a"), "\xff"s + "a\0"s);
    EXPECT_EQ(maxKey("a"), "\x7f"s + "a\0"s);
}

TEST(RawBson, WritesTheRarerTypes) {
    EXPECT_EQ(boolean("a", true), "\x08"s + "a\0\x01"s);
    EXPECT_EQ(boolean("a", false), "\x08"s + "a\0\0"s);
    EXPECT_EQ(binary("a", "\x01\x02"), "\x05"s + "a\0\x02\0\0\0\0\x01\x02"s);
    EXPECT_EQ(oid("a", "twelve bytes"), "\x07"s + "a\0twelve bytes"s);
    EXPECT_EQ(regex("a", "x", "i"), "\x0b"s + "a\0x\0i\0"s);
    EXPECT_EQ(dbPointer("a", "n", "twelve bytes"), "\x0c"s + "a\0\x02\0\0\0n\0twelve bytes"s);
    EXPECT_EQ(code("a", "f"), "\x0d"s + "a\0\x02\0\0\0f\0"s);
    EXPECT_EQ(symbol("a", "s"), "\x0e"s + "a\0\x02\0\0\0s\0"s);
    EXPECT_EQ(codeWithScope("a", "f", doc()), "\x0f"s + "a\0\x0f\0\0\0\x02\0\0\0f\0\x05\0\0\0\0"s);
    EXPECT_EQ(timestamp("a", 0x0000000100000002), "\x11"s + "a\0\x02\0\0\0\x01\0\0\0"s);
    EXPECT_EQ(decimal128("a", 1, 2), "\x13"s + "a\0\x01\0\0\0\0\0\0\0\x02\0\0\0\0\0\0\0"s);
}

TEST(RawBson, RefusesAZeroInAKey) {
    EXPECT_THROW(int32("a\0b"s, 1), std::invalid_argument);
}

TEST(RawBson, PrintsElementsByKeyTypeAndValue) {
    EXPECT_THAT(testing::PrintToString(doc(int32("a", 1), array("b", doc(number("0", 2.5))),
                                           string("c", "x\0y"s), date("d", -1), null("e"))),
                HasSubstr(R"({"a": int32 1, "b": array {"0": double 2.5}, "c": string "x\x00y", )"
                          R"("d": date -1, "e": null})"));
}

TEST(RawBson, PrintsDamagedBytesInFull) {
    EXPECT_THAT(testing::PrintToString(document_bytes{"\x05\x00\x00\x00\x00\xab"s}),
                HasSubstr("{} then ab"));
}

} // namespace
