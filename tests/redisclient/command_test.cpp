#include "redisclient/redisclient.h"

#include <gtest/gtest.h>

#include <QVariant>

namespace {

using RedisClient::Command;

TEST(RedisCommand, IsForTheDatabaseUsedLastUnlessItSaysOtherwise) {
    EXPECT_LT(Command({"PING"}).db(), 0);
    EXPECT_EQ(Command({"PING"}, 3).db(), 3);
}

TEST(RedisCommand, TravelsInsideAVariant) {
    const QList<QByteArray> parts{"SET", QByteArray("a\0b", 3), ""};

    const auto arrived = QVariant::fromValue(Command(parts, 2)).value<Command>();

    EXPECT_EQ(arrived.parts(), parts);
    EXPECT_EQ(arrived.db(), 2);
}

} // namespace
