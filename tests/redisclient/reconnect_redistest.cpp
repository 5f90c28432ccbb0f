#include "redisclient/redisclient.h"
#include "tests/support/eventually.h"
#include "tests/support/redis_server.h"
#include "tests/support/redis_wire.h"
#include "tests/support/stopwatch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using RedisClient::Connection;
using RedisClient::ConnectionConfig;
using RedisClient::Response;
using test_support::eventually;
using test_support::RedisProxy;
using test_support::RedisServer;
using test_support::Stopwatch;
using testing::HasSubstr;

constexpr int patientMsecs = 30'000;
constexpr int hastyMsecs = 500;

ConnectionConfig configFor(int port, const QString& password = QString(),
                           int commandMsecs = patientMsecs) {
    ConnectionConfig config(QStringLiteral("127.0.0.1"), password, port, QStringLiteral("driver"));
    config.setTimeouts(patientMsecs, commandMsecs);
    return config;
}

std::string failureOf(Connection& connection, const QList<QByteArray>& command, int db = 0) {
    try {
        connection.commandSync(command, db);
    } catch (const Connection::Exception& exception) {
        return exception.what();
    }
    ADD_FAILURE() << "the command was answered";
    return {};
}

class RedisConnection : public testing::Test {
protected:
    void closeFromTheServer(const Connection& connection) {
        server.run({"CLIENT", "KILL", "TYPE", "normal"});
        ASSERT_TRUE(eventually([&] { return !connection.isConnected(); }));
    }

    RedisServer server;
};

// The connection was lost while nothing was under way

TEST_F(RedisConnection, ReconnectsAfterTheServerClosedTheIdleConnection) {
    Connection connection(configFor(server.port()));
    connection.connect();
    closeFromTheServer(connection);

    connection.commandSync({"INCR", "key"}, 0);

    EXPECT_EQ(server.run({"GET", "key"}), QVariant(QByteArray("1")));
}

TEST_F(RedisConnection, ReconnectsAfterTheServerFoundItIdleForTooLong) {
    Connection connection(configFor(server.port()));
    connection.connect();
    server.run({"CONFIG", "SET", "timeout", "1"});
    ASSERT_TRUE(eventually([&] { return !connection.isConnected(); }));

    connection.commandSync({"INCR", "key"}, 0);

    EXPECT_EQ(server.run({"GET", "key"}), QVariant(QByteArray("1")));
}

TEST_F(RedisConnection, ReconnectsAfterTheServerWasStartedAnew) {
    Connection connection(configFor(server.port()));
    connection.connect();
    server.stop();
    server.start();

    connection.commandSync({"INCR", "key"}, 0);

    EXPECT_EQ(server.run({"GET", "key"}), QVariant(QByteArray("1")));
}

TEST_F(RedisConnection, ReconnectsAfterTheCallerDisconnected) {
    Connection connection(configFor(server.port()));
    connection.connect();
    connection.disconnect();

    connection.commandSync({"INCR", "key"}, 0);

    EXPECT_EQ(server.run({"GET", "key"}), QVariant(QByteArray("1")));
}

TEST_F(RedisConnection, ReportsWhenThereIsNoServerAndFindsItLater) {
    Connection connection(configFor(server.port()));
    connection.connect();
    server.stop();
    EXPECT_THAT(failureOf(connection, {"INCR", "key"}), HasSubstr("Connection refused"));
    server.start();

    connection.commandSync({"INCR", "key"}, 0);

    EXPECT_EQ(server.run({"GET", "key"}), QVariant(QByteArray("1")));
}

TEST_F(RedisConnection, KnowsThatTheServerClosed) {
    Connection connection(configFor(server.port()));
    connection.connect();
    EXPECT_TRUE(connection.isConnected());

    server.run({"CLIENT", "KILL", "TYPE", "normal"});

    EXPECT_TRUE(eventually([&] { return !connection.isConnected(); }));
}

TEST_F(RedisConnection, SaysThePasswordTheNameAndTheDatabaseAgain) {
    server.setPassword("secret");
    Connection connection(configFor(server.port(), QStringLiteral("secret")));
    connection.commandSync({"PING"}, 3);
    closeFromTheServer(connection);

    connection.commandSync({"SET", "key", "value"}, 3);

    EXPECT_EQ(server.run({"GET", "key"}, 3), QVariant(QByteArray("value")));
    EXPECT_EQ(server.clientField("driver", "db"), QByteArray("3"));
}

TEST_F(RedisConnection, GoesBackToTheDatabaseUsedLastWhenACommandNamesNone) {
    Connection connection(configFor(server.port()));
    connection.commandSync({"PING"}, 3);
    closeFromTheServer(connection);

    connection.commandSync({"SET", "key", "value"});

    EXPECT_EQ(server.run({"GET", "key"}, 3), QVariant(QByteArray("value")));
}

TEST_F(RedisConnection, SelectsOnlyWhenTheDatabaseDiffers) {
    Connection connection(configFor(server.port()));
    for (const int db : {0, 0, 2, 2, 2, 0}) {
        connection.commandSync({"PING"}, db);
    }

    EXPECT_EQ(server.callsOf("select"), 2);
}

TEST_F(RedisConnection, SelectsAgainAfterAReset) {
    Connection connection(configFor(server.port()));
    connection.commandSync({"RESET"}, 3);

    connection.commandSync({"SET", "key", "value"}, 3);

    EXPECT_EQ(server.run({"GET", "key"}, 3), QVariant(QByteArray("value")));
}

TEST_F(RedisConnection, ReportsThatThePasswordWasChangedMeanwhile) {
    server.setPassword("old");
    Connection connection(configFor(server.port(), QStringLiteral("old")));
    connection.connect();
    server.setPassword("new");
    closeFromTheServer(connection);

    EXPECT_THAT(failureOf(connection, {"SET", "key", "value"}), HasSubstr("AUTH: WRONGPASS"));
    EXPECT_FALSE(server.run({"GET", "key"}).isValid());
}

// The connection was lost under a command; more of that in tests/wire

TEST_F(RedisConnection, ReconnectsOnlyOnceForACommand) {
    RedisProxy proxy(server.port());
    Connection connection(configFor(proxy.port()));
    connection.connect();
    server.stop();
    ASSERT_TRUE(eventually([&] { return !connection.isConnected(); }));

    failureOf(connection, {"INCR", "key"});

    EXPECT_EQ(proxy.connections(), 2);
}

// The server hangs

TEST_F(RedisConnection, GivesUpAServerThatHangs) {
    Connection connection(configFor(server.port(), QString(), hastyMsecs));
    connection.connect();
    server.freeze();
    const Stopwatch watch;

    EXPECT_THAT(failureOf(connection, {"PING"}), HasSubstr("timed out"));
    EXPECT_THAT(watch.elapsed(),
                testing::AllOf(testing::Ge(std::chrono::milliseconds(hastyMsecs)),
                               testing::Lt(std::chrono::milliseconds(patientMsecs / 3))));
    EXPECT_FALSE(connection.isConnected());
}

TEST_F(RedisConnection, IsNotReusedAfterATimeout) {
    Connection connection(configFor(server.port(), QString(), hastyMsecs));
    const Response before = connection.commandSync({"CLIENT", "ID"}, 0);
    server.freeze();
    failureOf(connection, {"PING"});
    server.resume();

    const Response after = connection.commandSync({"CLIENT", "ID"}, 0);

    EXPECT_EQ(after.type(), Response::Integer);
    EXPECT_NE(after.getValue(), before.getValue());
}

} // namespace
