#include "host/transfer/redis_entry.h"

#include "host/failure.h"
#include "host/transfer/role_names.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

void expectKept(const host::RedisEntry& entry) {
    const auto line = host::entryLine(entry);
    EXPECT_FALSE(line.contains('\n'));
    EXPECT_EQ(host::entryOfLine(line), entry) << line.toStdString();
}

QString failureOf(const QByteArray& line) {
    try {
        host::entryOfLine(line);
    } catch (const host::Failure& failure) {
        return QString::fromUtf8(failure.what());
    }
    return {};
}

TEST(RedisEntryLine, IsPlainText) {
    EXPECT_EQ(host::entryLine({.key = "drv:17", .type = "string", .parts = {"{\"a\":1}"}}),
              R"({"key":"drv:17","type":"string","value":"{\"a\":1}"})"_qba);
    EXPECT_EQ(
        host::entryLine({.key = "dev:clients:17",
                         .type = "set",
                         .parts = {"a", "b"},
                         .expiresMsecs = 1'700'000'000'123}),
        R"({"expires_ms":1700000000123,"key":"dev:clients:17","type":"set","value":["a","b"]})"_qba);
}

TEST(RedisEntryLine, KeepsAnyBytes) {
    QByteArray all;
    for (int byte = 0; byte < 256; ++byte) {
        all.append(static_cast<char>(byte));
    }
    expectKept({.key = all, .type = "string", .parts = {all}});
    expectKept({.key = "k", .type = "hash", .parts = {"field", all, all, ""}});
    expectKept({.key = "", .type = "string", .parts = {""}});
    expectKept({.key = "k", .type = "list", .parts = {}});
    expectKept({.key = "\xef\xbb\xbf", .type = "string", .parts = {"\xef\xbb\xbfx"}});
    expectKept({.key = "k", .type = "string", .parts = {QByteArray("a\0b\n\xe2\x80\xa8", 7)}});
    expectKept(
        {.key = "k", .type = "string", .parts = {"\xef\xbf\xbf \xed\xa0\x80 \xf4\x8f\xbf\xbf"}});
}

TEST(RedisEntry, HasNoOrderWhereRedisHasNone) {
    const auto entry = [](const char* type, const QList<QByteArray>& parts) {
        return host::RedisEntry{.key = "k", .type = type, .parts = parts};
    };
    EXPECT_EQ(entry("set", {"a", "b"}), entry("set", {"b", "a"}));
    EXPECT_EQ(entry("hash", {"f", "1", "g", "2"}), entry("hash", {"g", "2", "f", "1"}));
    EXPECT_FALSE(entry("hash", {"f", "1", "g", "2"}) == entry("hash", {"f", "2", "g", "1"}));
    EXPECT_FALSE(entry("list", {"a", "b"}) == entry("list", {"b", "a"}));
    EXPECT_FALSE(entry("set", {"a"}) == entry("list", {"a"}));
}

TEST(RedisEntryLine, SaysWhatIsInBase64) {
    EXPECT_TRUE(
        host::hasBase64(host::entryLine({.key = "k", .type = "string", .parts = {"\xff"}})));
    EXPECT_FALSE(host::hasBase64(
        host::entryLine({.key = "k", .type = "string", .parts = {"{\"base64\":\"x\"}"}})));
}

TEST(RedisEntryLine, SaysWhatIsWrongWithALine) {
    EXPECT_TRUE(failureOf("{\"key\":").startsWith("not a JSON object"_q));
    EXPECT_EQ(failureOf(R"({"key":"k","type":"stream","value":"x"})"),
              "the type is none that is known here"_q);
    EXPECT_EQ(failureOf(R"({"key":7,"type":"string","value":"x"})"),
              "the key is neither a text nor base64"_q);
    EXPECT_EQ(failureOf(R"({"key":"k","type":"set","value":"x"})"), "the value is not a list"_q);
    EXPECT_EQ(failureOf(R"({"key":"k","type":"string","value":{"base64":"!"}})"),
              "the value is neither a text nor base64"_q);
}

QJsonObject settings(int state, int queue) {
    return {{"redis"_q, QJsonObject{{"state_db"_q, state}, {"queue_db"_q, queue}}}};
}

TEST(RedisDatabases, AreNamedByTheirRoles) {
    using Databases = std::map<QString, int>;
    EXPECT_EQ(host::redisDatabases(settings(0, 7)),
              (Databases{{"client"_q, 2}, {"queue"_q, 7}, {"state"_q, 0}}));
    EXPECT_EQ(host::redisDatabases(settings(2, 2)), (Databases{{"client+queue+state"_q, 2}}));
}

TEST(RedisDatabases, AreFoundByTheirRoles) {
    EXPECT_EQ(host::databaseOfRoles(settings(3, 7), "state"_q), 3);
    EXPECT_EQ(host::databaseOfRoles(settings(3, 3), "queue+state"_q), 3);
    EXPECT_THROW(host::databaseOfRoles(settings(3, 7), "queue+state"_q), host::Failure);
}

} // namespace
