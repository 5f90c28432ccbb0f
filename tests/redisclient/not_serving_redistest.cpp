#include "redisclient/redisclient.h"
#include "tests/support/eventually.h"
#include "tests/support/redis_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <string>
#include <thread>

// Servers that answer, but that they do not serve now.

namespace {

using namespace std::chrono_literals;

using RedisClient::Connection;
using RedisClient::ConnectionConfig;
using RedisClient::Response;
using test_support::eventually;
using test_support::RedisServer;
using testing::HasSubstr;

ConnectionConfig configFor(const RedisServer& server, const QString& password = QString()) {
    return ConnectionConfig(QStringLiteral("127.0.0.1"), password, server.port());
}

/// The answer, or nothing and why.
std::optional<Response> answer(Connection& connection, const QList<QByteArray>& command,
                               std::string& failure) {
    try {
        return connection.commandSync(command, 0);
    } catch (const Connection::Exception& exception) {
        failure = exception.what();
        return std::nullopt;
    }
}

std::string failureOf(Connection& connection, const QList<QByteArray>& command) {
    std::string failure;
    EXPECT_FALSE(answer(connection, command, failure)) << "the command was answered";
    return failure;
}

class RedisThatLoads : public testing::Test {
protected:
    void fill() {
        server.run({"EVAL",
                    "for i = 1, 500 do redis.call('SET', 'key' .. i, string.rep('x', 200)) end",
                    "0"});
        server.run({"SAVE"});
    }

    void expectToBeThereOnceItServes(Connection& connection) {
        std::string failure;
        std::optional<Response> response;
        ASSERT_TRUE(eventually([&] {
            response = answer(connection, {"STRLEN", "key500"}, failure);
            EXPECT_TRUE(response || failure.find("LOADING") != std::string::npos) << failure;
            return response.has_value();
        }));
        EXPECT_EQ(response->getValue(), QVariant(qlonglong{200}));
    }

    RedisServer server;
};

TEST_F(RedisThatLoads, IsNotThereUntilItServes) {
    fill();
    server.kill();
    server.startLoading(2ms);
    Connection connection(configFor(server));

    EXPECT_FALSE(connection.connect());
    EXPECT_FALSE(connection.isConnected());
    EXPECT_THAT(failureOf(connection, {"GET", "key1"}),
                HasSubstr("GET: not connected: PING: LOADING"));
    EXPECT_THAT(failureOf(connection, {"SET", "key1", "x"}), HasSubstr("PING: LOADING"));
    expectToBeThereOnceItServes(connection);
}

TEST_F(RedisThatLoads, IsNotThereForOneWithThePasswordEither) {
    fill();
    server.kill();
    server.startLoading(2ms, {QStringLiteral("--requirepass"), QStringLiteral("secret")});
    Connection connection(configFor(server, QStringLiteral("secret")));

    EXPECT_THAT(failureOf(connection, {"GET", "key1"}), HasSubstr("PING: LOADING"));
    expectToBeThereOnceItServes(connection);
}

TEST_F(RedisThatLoads, GivesNoAnswerInAConversationThatHasBegun) {
    RedisServer debugged({QStringLiteral("--enable-debug-command"), QStringLiteral("yes"),
                          QStringLiteral("--loading-process-events-interval-bytes"),
                          QStringLiteral("1024")});
    debugged.run(
        {"EVAL", "for i = 1, 500 do redis.call('SET', 'key' .. i, string.rep('x', 200)) end", "0"});
    debugged.run({"CONFIG", "SET", "key-load-delay", "2000"});
    Connection connection(configFor(debugged));
    connection.connect();
    std::jthread reloading([&] { debugged.run({"DEBUG", "RELOAD"}); });

    std::string failure;
    ASSERT_TRUE(eventually([&] { return !answer(connection, {"STRLEN", "key500"}, failure); }));
    EXPECT_THAT(failure, HasSubstr("STRLEN: LOADING"));
    expectToBeThereOnceItServes(connection);
}

TEST(RedisReplica, IsNotThereWithoutTheServerThatItCopies) {
    RedisServer server;
    server.run({"CONFIG", "SET", "replica-serve-stale-data", "no"});
    Connection connection(configFor(server));
    connection.connect();
    server.run({"REPLICAOF", "127.0.0.1", "1"});

    EXPECT_THAT(failureOf(connection, {"GET", "key"}), HasSubstr("GET: MASTERDOWN"));
    EXPECT_FALSE(connection.connect());
    server.run({"REPLICAOF", "NO", "ONE"});
    EXPECT_TRUE(connection.connect());
}

TEST(RedisThatRunsAScript, GivesNoAnswerUntilItEnds) {
    RedisServer server;
    server.run({"CONFIG", "SET", "busy-reply-threshold", "1"});
    Connection connection(configFor(server));
    connection.connect();
    std::jthread running([&] {
        std::string killed;
        Connection other(configFor(server));
        answer(other, {"EVAL", "while true do end", "0"}, killed);
    });

    std::string failure;
    ASSERT_TRUE(eventually([&] { return !answer(connection, {"GET", "key"}, failure); }));
    EXPECT_THAT(failure, HasSubstr("GET: BUSY"));
    server.run({"SCRIPT", "KILL"});
    running.join();
    EXPECT_EQ(connection.commandSync({"GET", "key"}, 0).type(), Response::Nil);
}

TEST(RedisCluster, GivesNoAnswerForKeysThatItDoesNotCover) {
    RedisServer server({QStringLiteral("--cluster-enabled"), QStringLiteral("yes")});
    Connection connection(configFor(server));

    EXPECT_TRUE(connection.connect());
    EXPECT_THAT(failureOf(connection, {"SET", "key", "value"}), HasSubstr("SET: CLUSTERDOWN"));
}

} // namespace
