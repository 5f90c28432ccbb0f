#include "redisclient/reply_reader.h"

#include <gtest/gtest.h>

namespace {

// What has come of the next answer counts for that one's length.
TEST(ReplyReader, ReadsAnAnswerThatBeganWithTheOneBefore) {
    RedisClient::ReplyReader reader;

    EXPECT_TRUE(reader.read("+OK\r\n$0").has_value());
    EXPECT_TRUE(reader.hasUnread());
    EXPECT_FALSE(reader.read({}).has_value());
    const auto answer = reader.read("\r\n\r\n");

    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(answer->getValue(), QVariant(QByteArray("")));
    EXPECT_FALSE(reader.hasUnread());
}

} // namespace
