#include "redisclient/redisclient.h"
#include "tests/support/fake_peer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QVariantList>

#include <string>

// What a real server of today never sends to this client, or not reliably.

namespace {

using RedisClient::Connection;
using RedisClient::ConnectionConfig;
using RedisClient::Response;
using test_support::FakePeer;

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

class RedisReplyOfTheThirdVersion : public testing::TestWithParam<const char*> {};

// Nobody asks for that version of the protocol, so who uses it is no server of ours.
TEST_P(RedisReplyOfTheThirdVersion, IsNoAnswer) {
    for (const QByteArray& start : {QByteArray(), QByteArray("*1\r\n")}) {
        std::string failure;
        try {
            responseTo(start + GetParam());
        } catch (const Connection::Exception& exception) {
            failure = exception.what();
        }
        EXPECT_THAT(failure, testing::HasSubstr("was not asked for"));
    }
}

INSTANTIATE_TEST_SUITE_P(Being, RedisReplyOfTheThirdVersion,
                         testing::Values(",3.25\r\n", "(3492890328409238509324850943850\r\n",
                                         "#t\r\n", "%1\r\n+a\r\n:1\r\n", "~1\r\n+a\r\n",
                                         "=8\r\ntxt:text\r\n", ">1\r\n+message\r\n"));

} // namespace
