#include "redisclient/redisclient.h"
#include "tests/support/redis_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using RedisClient::Connection;
using RedisClient::ConnectionConfig;
using RedisClient::Response;
using test_support::RedisServer;
using testing::EndsWith;
using testing::HasSubstr;

class RedisLogin : public testing::Test {
protected:
    ConnectionConfig config(const QString& password, const QString& name = QString()) const {
        return ConnectionConfig(QStringLiteral("127.0.0.1"), password, server.port(), name);
    }

    std::string causeOfFailure(const ConnectionConfig& configuration) {
        Connection connection(configuration);
        EXPECT_FALSE(connection.connect());
        try {
            connection.commandSync({"PING"}, 0);
        } catch (const Connection::Exception& exception) {
            return exception.what();
        }
        return {};
    }

    RedisServer server;
};

TEST_F(RedisLogin, SucceedsWithThePassword) {
    server.setPassword("secret");
    Connection connection(config(QStringLiteral("secret")));

    ASSERT_TRUE(connection.connect());
    connection.commandSync({"SET", "key", "value"}, 0);

    EXPECT_EQ(server.run({"GET", "key"}), QVariant(QByteArray("value")));
}

TEST_F(RedisLogin, FailsWithAnotherPassword) {
    server.setPassword("secret");

    EXPECT_THAT(causeOfFailure(config(QStringLiteral("guess"))), HasSubstr("AUTH: WRONGPASS"));
}

TEST_F(RedisLogin, SucceedsForOneWhoMaySayNothingButWhatHeIsAllowedTo) {
    server.run({"ACL", "SETUSER", "default", "-ping"});
    Connection connection(config(QString()));

    ASSERT_TRUE(connection.connect());
    EXPECT_EQ(connection.commandSync({"SET", "key", "value"}, 0).type(), Response::Status);
}

TEST_F(RedisLogin, FailsWithoutThePassword) {
    server.setPassword("secret");

    EXPECT_THAT(causeOfFailure(config(QString())), HasSubstr("NOAUTH"));
}

// Deliberate: a server that asks for no password may well be the wrong one.
TEST_F(RedisLogin, FailsWithAPasswordThatTheServerDoesNotAskFor) {
    EXPECT_THAT(causeOfFailure(config(QStringLiteral("secret"))), HasSubstr("AUTH: "));
}

TEST_F(RedisLogin, TakesBlanksQuotesLineEndsAndZerosInThePassword) {
    const QString password =
        QStringLiteral(" a 'b' \"c\"\r\n$5 \u20ac") + QChar::Null + QStringLiteral("z ");
    server.setPassword(password.toUtf8());
    Connection connection(config(password));

    EXPECT_TRUE(connection.connect());
    EXPECT_THAT(causeOfFailure(config(password.left(password.size() - 2))), HasSubstr("WRONGPASS"));
}

// A server without AUTH answers with what it was told.
TEST_F(RedisLogin, DoesNotRepeatThePasswordToAServerThatDoesNotKnowTheCommand) {
    const RedisServer unknowing(
        {QStringLiteral("--rename-command"), QStringLiteral("AUTH"), QString()});
    Connection connection(
        ConnectionConfig(QStringLiteral("127.0.0.1"), QStringLiteral("se cret"), unknowing.port()));
    connection.connect();

    try {
        connection.commandSync({"PING"}, 0);
        FAIL() << "the server took the password";
    } catch (const Connection::Exception& exception) {
        EXPECT_THAT(exception.what(),
                    EndsWith(": PING: not connected: AUTH: ERR unknown command 'AUTH'"));
    }
}

TEST_F(RedisLogin, ShowsTheNameInTheListOfClients) {
    Connection connection(config(QString(), QStringLiteral("driver")));
    connection.connect();

    EXPECT_EQ(server.clientField("driver", "name"), QByteArray("driver"));
}

TEST_F(RedisLogin, GoesWithoutANameThatTheServerRefuses) {
    Connection connection(config(QString(), QStringLiteral("two words")));

    ASSERT_TRUE(connection.connect());
    EXPECT_EQ(connection.commandSync({"CLIENT", "GETNAME"}, 0).type(), Response::Nil);
}

TEST_F(RedisLogin, FailsAtAServerThatHasNoRoom) {
    server.run({"CONFIG", "SET", "maxclients", "1"});

    EXPECT_THAT(causeOfFailure(config(QString())), HasSubstr("max number of clients reached"));
}

} // namespace
