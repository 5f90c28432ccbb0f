#include "redisclient/redisclient.h"
#include "tests/support/redis_server.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QVariantList>

namespace {

using RedisClient::Connection;
using RedisClient::ConnectionConfig;
using test_support::RedisServer;
using testing::HasSubstr;

constexpr int largestValueBytes = 512 << 20;

class RedisLargeValues : public testing::Test {
protected:
    static ConnectionConfig config(int port) {
        ConnectionConfig config(QStringLiteral("127.0.0.1"), QString(), port);
        config.setTimeouts(120'000, 120'000);
        return config;
    }

    /// A value of the largest size: zeros, and one "x" at the end.
    void storeLargestValue() {
        server.run({"SETRANGE", "key", QByteArray::number(largestValueBytes - 1), "x"});
    }

    RedisServer server;
    Connection connection{config(server.port())};
};

TEST_F(RedisLargeValues, AreReadUpToTheLargestThatTheServerStores) {
    storeLargestValue();

    const QByteArray value = connection.commandSync({"GET", "key"}, 0).getValue().toByteArray();

    ASSERT_EQ(value.size(), largestValueBytes);
    EXPECT_EQ(value.indexOf('x'), largestValueBytes - 1);
}

TEST_F(RedisLargeValues, AreStoredUpToTheLargestThatTheServerTakes) {
    QByteArray value(largestValueBytes, '\0');
    value[largestValueBytes - 1] = 'x';

    connection.commandSync({"SET", "key", value}, 0);

    EXPECT_EQ(server.run({"STRLEN", "key"}), QVariant(qlonglong{largestValueBytes}));
    EXPECT_EQ(server.run({"GETRANGE", "key", "-2", "-1"}), QVariant(QByteArray("\0x", 2)));
}

TEST_F(RedisLargeValues, AreRefusedBeyondAGibibyteInOneAnswer) {
    storeLargestValue();

    try {
        connection.commandSync({"MGET", "key", "key"}, 0);
        ADD_FAILURE() << "the command was answered";
    } catch (const Connection::Exception& exception) {
        EXPECT_THAT(exception.what(), HasSubstr("longer than 1 GiB"));
    }
    EXPECT_EQ(connection.commandSync({"STRLEN", "key"}, 0).getValue(),
              QVariant(qlonglong{largestValueBytes}));
}

} // namespace
