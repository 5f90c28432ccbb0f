#include "redisclient/redisclient.h"
#include "tests/redisclient/fake_peer.h"

#include <gtest/gtest.h>

#include <QVariantList>

// What a real server of today never sends to this client, or not reliably.

namespace {

using RedisClient::Connection;
using RedisClient::ConnectionConfig;
using RedisClient::Response;
using testing_support::FakePeer;

Response responseTo(const QByteArray& wire) {
    const FakePeer peer(FakePeer::answering(wire));
    Connection connection(
        ConnectionConfig(QStringLiteral("127.0.0.1"), QString(), peer.port(), QString()));
    return connection.commandSync({"GET", "key"});
}

TEST(RedisReplyTypes, TakeANilArrayForNil) {
    const Response response = responseTo("*-1\r\n");

    EXPECT_EQ(response.type(), Response::Nil);
    EXPECT_FALSE(response.getValue().isValid());
}

TEST(RedisReplyTypes, MakeAnErrorInsideAnArrayAnInvalidElement) {
    const Response response = responseTo("*3\r\n:1\r\n-ERR no\r\n+OK\r\n");

    EXPECT_FALSE(response.isErrorMessage());
    const QVariantList expected{qlonglong{1}, QVariant(), QByteArray("OK")};
    EXPECT_EQ(response.getValue(), QVariant(expected));
}

TEST(RedisReplyTypes, GiveANumberWithAFractionAsItsText) {
    EXPECT_EQ(responseTo(",3.25\r\n").getValue(), QVariant(QByteArray("3.25")));
}

TEST(RedisReplyTypes, GiveABigNumberAsItsText) {
    const QByteArray digits = "3492890328409238509324850943850943825024385";

    EXPECT_EQ(responseTo('(' + digits + "\r\n").getValue(), QVariant(digits));
}

TEST(RedisReplyTypes, GiveABooleanAsOneOrZero) {
    EXPECT_EQ(responseTo("#t\r\n").getValue(), QVariant(qlonglong{1}));
    EXPECT_EQ(responseTo("#f\r\n").getValue(), QVariant(qlonglong{0}));
}

TEST(RedisReplyTypes, GiveAMapAsKeysAndValuesInTurn) {
    const QVariantList expected{QByteArray("a"), qlonglong{1}, QByteArray("b"), qlonglong{2}};

    EXPECT_EQ(responseTo("%2\r\n+a\r\n:1\r\n+b\r\n:2\r\n").getValue(), QVariant(expected));
}

TEST(RedisReplyTypes, GiveASetAsAnArray) {
    const Response response = responseTo("~1\r\n+a\r\n");

    EXPECT_EQ(response.type(), Response::MultiBulk);
    EXPECT_EQ(response.getValue(), QVariant(QVariantList{QByteArray("a")}));
}

TEST(RedisReplyTypes, GiveVerbatimTextWithoutItsFormat) {
    EXPECT_EQ(responseTo("=8\r\ntxt:text\r\n").getValue(), QVariant(QByteArray("text")));
}

TEST(RedisReplyTypes, GiveTheNullOfTheThirdVersionAsNil) {
    EXPECT_EQ(responseTo("_\r\n").type(), Response::Nil);
}

TEST(RedisReplyTypes, PassOverPushedMessages) {
    const Response response = responseTo(">2\r\n+invalidate\r\n*1\r\n+key\r\n$5\r\nvalue\r\n");

    EXPECT_EQ(response.getValue(), QVariant(QByteArray("value")));
}

} // namespace
