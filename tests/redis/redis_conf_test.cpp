#include "redis/redis_conf.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>

#include <limits>
#include <type_traits>

using namespace test_support::literals;

namespace {

redis_conf read(const char* settings) {
    const QJsonDocument document = QJsonDocument::fromJson(settings);
    EXPECT_TRUE(document.isObject()) << settings;
    return redis_conf_from_json(document.object());
}

TEST(RedisConf, TakesItsDefaultsFromAnEmptyObject) {
    const redis_conf conf = redis_conf_from_json({});

    EXPECT_EQ(conf.host, "127.0.0.1"_q);
    EXPECT_EQ(conf.auth, ""_q);
    EXPECT_EQ(conf.name, ""_q);
    EXPECT_EQ(conf.port, 6379);
    EXPECT_EQ(conf.client_db, 2);
    EXPECT_EQ(conf.state_db, 0);
    EXPECT_EQ(conf.queue_db, 7);
}

TEST(RedisConf, ReadsEveryKey) {
    const redis_conf conf =
        read(R"({"host": "redis.example", "auth": "secret", "name": "driver", "port": 6380,
                 "cleint_db": 11, "state_db": 12, "queue_db": 13})");

    EXPECT_EQ(conf.host, "redis.example"_q);
    EXPECT_EQ(conf.auth, "secret"_q);
    EXPECT_EQ(conf.name, "driver"_q);
    EXPECT_EQ(conf.port, 6380);
    EXPECT_EQ(conf.client_db, 11);
    EXPECT_EQ(conf.state_db, 12);
    EXPECT_EQ(conf.queue_db, 13);
}

TEST(RedisConf, ReadsEachKeyByItself) {
    EXPECT_EQ(read(R"({"host": "h"})").host, "h"_q);
    EXPECT_EQ(read(R"({"auth": "a"})").auth, "a"_q);
    EXPECT_EQ(read(R"({"name": "n"})").name, "n"_q);
    EXPECT_EQ(read(R"({"port": 1})").port, 1);
    EXPECT_EQ(read(R"({"cleint_db": 1})").client_db, 1);
    EXPECT_EQ(read(R"({"state_db": 1})").state_db, 1);
    EXPECT_EQ(read(R"({"queue_db": 1})").queue_db, 1);
}

TEST(RedisConf, KeepsTextInAnyScriptAndEmptyText) {
    EXPECT_EQ(read(R"({"auth": "пароль 🔑"})").auth, "пароль 🔑"_q);
    EXPECT_EQ(read(R"({"host": ""})").host, ""_q);
}

TEST(RedisConf, TakesTheDefaultForTextOfAnotherType) {
    for (const char* value : {"5", "true", "null", "[\"x\"]", "{\"x\": \"y\"}"}) {
        const std::string settings = std::string{R"({"host": )"} + value + R"(, "auth": )" + value +
                                     R"(, "name": )" + value + "}";
        const redis_conf conf = read(settings.c_str());
        EXPECT_EQ(conf.host, "127.0.0.1"_q) << value;
        EXPECT_EQ(conf.auth, ""_q) << value;
        EXPECT_EQ(conf.name, ""_q) << value;
    }
}

TEST(RedisConf, TakesTheDefaultForANumberOfAnotherType) {
    for (const char* value : {"\"6380\"", "true", "null", "[1]", "{\"x\": 1}"}) {
        const std::string settings = std::string{R"({"port": )"} + value + R"(, "cleint_db": )" +
                                     value + R"(, "state_db": )" + value + R"(, "queue_db": )" +
                                     value + "}";
        const redis_conf conf = read(settings.c_str());
        EXPECT_EQ(conf.port, 6379) << value;
        EXPECT_EQ(conf.client_db, 2) << value;
        EXPECT_EQ(conf.state_db, 0) << value;
        EXPECT_EQ(conf.queue_db, 7) << value;
    }
}

TEST(RedisConf, TakesTheDefaultForANumberThatIsNotWhole) {
    EXPECT_EQ(read(R"({"port": 6380.5})").port, 6379);
    EXPECT_EQ(read(R"({"cleint_db": 3.25})").client_db, 2);
    EXPECT_EQ(read(R"({"state_db": 0.5})").state_db, 0);
    EXPECT_EQ(read(R"({"queue_db": -0.5})").queue_db, 7);
}

TEST(RedisConf, ReadsAWholeNumberWithAFraction) {
    EXPECT_EQ(read(R"({"port": 6380.0})").port, 6380);
    EXPECT_EQ(read(R"({"port": 6.38e3})").port, 6380);
}

TEST(RedisConf, TakesTheDefaultForANumberBeyond32Bits) {
    EXPECT_EQ(read(R"({"port": 2147483648})").port, 6379);
    EXPECT_EQ(read(R"({"queue_db": -2147483649})").queue_db, 7);
    EXPECT_EQ(read(R"({"port": 1e300})").port, 6379);
}

// Deliberate: no number is checked for its range.
TEST(RedisConf, PassesOnNumbersThatNoServerTakes) {
    const redis_conf conf =
        read(R"({"port": -1, "cleint_db": -2, "state_db": 2147483647, "queue_db": -2147483648})");

    EXPECT_EQ(conf.port, -1);
    EXPECT_EQ(conf.client_db, -2);
    EXPECT_EQ(conf.state_db, std::numeric_limits<int>::max());
    EXPECT_EQ(conf.queue_db, std::numeric_limits<int>::min());
}

// Deliberate: hosts' settings files spell the key so.
TEST(RedisConf, ReadsTheClientDatabaseUnderCleintDbOnly) {
    EXPECT_EQ(read(R"({"client_db": 9})").client_db, 2);
    EXPECT_EQ(read(R"({"cleint_db": 9, "client_db": 8})").client_db, 9);
    EXPECT_EQ(read(R"({"Cleint_db": 9, "cleint_DB": 9, "cleintdb": 9, "clients_db": 9})").client_db,
              2);
}

TEST(RedisConf, IgnoresKeysOfAnotherCaseAndUnknownOnes) {
    const redis_conf conf = read(R"({"Host": "h", "PORT": 1, "password": "p", "db": 4})");

    EXPECT_EQ(conf.host, "127.0.0.1"_q);
    EXPECT_EQ(conf.port, 6379);
    EXPECT_EQ(conf.auth, ""_q);
    EXPECT_EQ(conf.state_db, 0);
}

TEST(RedisConf, HoldsThreeTextsAndThenFourNumbers) {
    static_assert(std::is_copy_constructible_v<redis_conf>);
    const auto& [host, auth, name, port, client_db, state_db, queue_db] =
        redis_conf{"h"_q, "a"_q, "n"_q, 1, 2, 3, 4};

    EXPECT_EQ(host, "h"_q);
    EXPECT_EQ(auth, "a"_q);
    EXPECT_EQ(name, "n"_q);
    EXPECT_EQ(port, 1);
    EXPECT_EQ(client_db, 2);
    EXPECT_EQ(state_db, 3);
    EXPECT_EQ(queue_db, 4);
}

} // namespace
