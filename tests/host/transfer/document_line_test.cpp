#include "host/transfer/document_line.h"

#include "host/failure.h"
#include "tests/support/decimal_comma.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/random_bson.h"
#include "tests/support/random_seed.h"
#include "tests/support/raw_bson.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace {

using namespace test_support::literals;
using namespace test_support::raw_bson;

QByteArray lineOf(const document_bytes& document) {
    return host::documentLine(document.view());
}

document_bytes readBack(const QByteArray& line) {
    return rawBson(host::documentOfLine(line));
}

QString failureOf(const QByteArray& line) {
    try {
        host::documentOfLine(line);
    } catch (const host::Failure& failure) {
        return QString::fromUtf8(failure.what());
    }
    return {};
}

document_bytes everyType() {
    return doc(int32("_id", 7), number("double", 0.1), number("minus zero", -0.0),
               number("infinite", std::numeric_limits<double>::infinity()),
               string("text", "ä\n\"\\\0z"), string("", "empty key"),
               embedded("document", doc(int64("a.b", 1), null("$dollar"))),
               array("list", doc(boolean("0", true), boolean("1", false))),
               binary("binary", "\0\xff", '\x80'), undefined("undefined"),
               oid("id", "123456789012"), date("date", 1'700'000'000'123), date("before", -1),
               date("late", std::numeric_limits<std::int64_t>::max()), regex("regex", "^a/", "im"),
               dbPointer("pointer", "c", "123456789012"), code("code", "f()"),
               symbol("symbol", "s"), codeWithScope("scoped", "f()", doc(int32("x", 1))),
               timestamp("timestamp", (std::uint64_t{5} << 32U) | 6U), int64("int64", 1),
               decimal128("decimal", 15, 0x303e000000000000), minKey("min"), maxKey("max"));
}

TEST(DocumentLine, KeepsEveryType) {
    const auto line = lineOf(everyType());
    EXPECT_FALSE(line.contains('\n'));
    EXPECT_FALSE(host::isBytesLine(line));
    EXPECT_EQ(readBack(line), everyType());
}

TEST(DocumentLine, IsCanonicalExtendedJson) {
    EXPECT_EQ(lineOf(doc(int32("_id", 7), date("ttl", 5), number("v", 2.5))),
              R"({ "_id" : { "$numberInt" : "7" }, "ttl" : { "$date" : { "$numberLong" : "5" } }, )"
              R"("v" : { "$numberDouble" : "2.5" } })"_qba);
}

TEST(DocumentLine, KeepsTheBytesOfWhatItsTextDoesNotKeep) {
    document_bytes deep = doc();
    for (int i = 0; i < 250; ++i) {
        deep = doc(embedded("d", deep));
    }
    double strangeNan = 0;
    const std::uint64_t bits = 0xfff8000000000123;
    std::memcpy(&strangeNan, &bits, sizeof bits);
    for (const auto& document : {
             doc(embedded("data", doc(string("$date", "tomorrow")))),
             doc(embedded("data", doc(string("$oid", "123456789012123456789012")))),
             doc(string("text", "no \xff UTF-8")),
             doc(number("v", strangeNan)),
             doc(regex("r", "a", "xi")),
             deep,
         }) {
        const auto line = lineOf(document);
        EXPECT_TRUE(host::isBytesLine(line)) << line.toStdString();
        EXPECT_EQ(readBack(line), document);
    }
}

TEST(DocumentLine, TellsADocumentFromWhatLooksLikeBytes) {
    const auto document = doc(string("$bson_base64", "BQAAAAA="));
    EXPECT_EQ(readBack(lineOf(document)), document);
}

TEST(DocumentLine, DoesNotFollowTheLocale) {
    const auto document = doc(number("v", 2.5));
    const auto line = lineOf(document);
    const test_support::decimal_comma comma;
    EXPECT_EQ(lineOf(document), line);
    EXPECT_EQ(readBack(line), document);
}

TEST(DocumentLine, KeepsRandomDocuments) {
    using test_support::random_bson::member;
    const auto seed = test_support::randomSeed(20'261'122);
    std::mt19937_64 random(seed);
    for (int i = 0; i < 3'000; ++i) {
        const auto document =
            test_support::random_bson::bytesOf(test_support::random_bson::generate(
                random, {{"_id", member::oid}, {"a", member::any}, {"b", member::object}}));
        ASSERT_EQ(readBack(lineOf(document)), document) << "seed " << seed;
    }
}

TEST(DocumentLine, SaysWhatIsWrongWithALine) {
    EXPECT_NE(failureOf("{\"a\": "), QString());
    EXPECT_NE(failureOf(""), QString());
    EXPECT_EQ(failureOf("{\"$bson_base64\":\"!\"}"), "the text after $bson_base64 is not base64"_q);
    EXPECT_EQ(failureOf("{\"$bson_base64\":\"BQAAAAE=\"}"),
              "the bytes after $bson_base64 are no BSON document"_q);
}

} // namespace
