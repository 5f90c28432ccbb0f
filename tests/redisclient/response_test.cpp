#include "redisclient/redisclient.h"

#include <gtest/gtest.h>

#include <QVariant>

namespace {

using RedisClient::Response;

TEST(RedisResponse, IsInvalidWhenDefaultConstructed) {
    const Response response;

    EXPECT_EQ(response.type(), Response::Invalid);
    EXPECT_FALSE(response.isErrorMessage());
    EXPECT_FALSE(response.getValue().isValid());
}

TEST(RedisResponse, KeepsTheTextOfAnErrorButHasNoValue) {
    const Response response = Response::error("ERR no such thing");

    EXPECT_TRUE(response.isErrorMessage());
    EXPECT_EQ(response.errorMessage(), QByteArray("ERR no such thing"));
    EXPECT_FALSE(response.getValue().isValid());
}

TEST(RedisResponse, TravelsInsideAVariant) {
    const Response response(Response::Integer, qlonglong{42});

    const auto arrived = QVariant::fromValue(response).value<Response>();

    EXPECT_EQ(arrived.type(), Response::Integer);
    EXPECT_EQ(arrived.getValue(), QVariant(qlonglong{42}));
}

} // namespace
