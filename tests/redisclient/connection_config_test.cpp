#include "redisclient/redisclient.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using RedisClient::ConnectionConfig;

TEST(RedisConnectionConfig, GivesConnectingFiveSecondsAndCommandsAMinuteByDefault) {
    const ConnectionConfig config;

    EXPECT_EQ(config.connectTimeoutMsecs(), 5'000);
    EXPECT_EQ(config.commandTimeoutMsecs(), 60'000);
}

TEST(RedisConnectionConfig, KeepsThePasswordAsItsUtf8Bytes) {
    const QString password = QStringLiteral("gr\u00fcn \"") + QChar::Null + QStringLiteral("'");

    const ConnectionConfig config(QStringLiteral("redis"), password, 6380, QStringLiteral("me"));

    EXPECT_EQ(config.auth(), QByteArray("gr\xc3\xbcn \"\0'", 9));
}

TEST(RedisConnectionConfig, TakesAPasswordThatIsNotText) {
    ConnectionConfig config;

    config.setAuthBytes("\xff\xfe");

    EXPECT_EQ(config.auth(), QByteArray("\xff\xfe"));
}

TEST(RedisConnectionConfig, RefusesTimeoutsThatAreNotPositive) {
    ConnectionConfig config;

    EXPECT_THROW(config.setTimeouts(0, 1), std::invalid_argument);
    EXPECT_THROW(config.setTimeouts(1, -1), std::invalid_argument);
}

} // namespace
