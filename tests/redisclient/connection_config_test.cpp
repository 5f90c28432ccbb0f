#include "redisclient/redisclient.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using RedisClient::ConnectionConfig;

TEST(RedisConnectionConfig, GivesConnectingFiveSecondsAndCommandsAMinuteByDefault) {
    const ConnectionConfig config(QStringLiteral("redis"));

    EXPECT_EQ(config.connectTimeoutMsecs(), 5'000);
    EXPECT_EQ(config.commandTimeoutMsecs(), 60'000);
}

TEST(RedisConnectionConfig, KeepsThePasswordAsItsUtf8Bytes) {
    const QString password = QStringLiteral("gr\u00fcn \"") + QChar::Null + QStringLiteral("'");

    const ConnectionConfig config(QStringLiteral("redis"), password, 6380, QStringLiteral("me"));

    EXPECT_EQ(config.auth(), QByteArray("gr\xc3\xbcn \"\0'", 9));
}

TEST(RedisConnectionConfig, RefusesTimeoutsThatAreNotPositive) {
    ConnectionConfig config(QStringLiteral("redis"));

    EXPECT_THROW(config.setTimeouts(0, 1), std::invalid_argument);
    EXPECT_THROW(config.setTimeouts(1, -1), std::invalid_argument);
}

} // namespace
