#include "tests/wire/byte_places.h"
#include "tests/wire/redis_wire_fixture.h"

#include "redisclient/redisclient.h"

// The wire to the Redis server breaks after so many bytes, or damages one.
namespace {

using RedisClient::Connection;
using test_support::Exchange;

class RedisBytes : public RedisWireTest, public testing::WithParamInterface<RedisKind> {
protected:
    /// How many bytes a call takes with all that is said before it.
    int bytesOf(const std::function<void()>& call) {
        redis.closeConnections();
        const int before = redis.bytesPassed();
        call();
        return redis.bytesPassed() - before;
    }

    const RedisKind& kind = GetParam();
    const std::unique_ptr<RedisStore> store = made(kind);
};

class RedisWrittenBytes : public RedisBytes {};

TEST_P(RedisWrittenBytes, MayEndAnywhere) {
    const int all = bytesOf([&] { store->write(device, 1); });
    int number = 1;
    for (const int place : bytePlaces(0, all)) {
        SCOPED_TRACE("after byte " + std::to_string(place));
        const int before = timesWritten();
        redis.closeConnections();
        redis.forget();
        mongo.forget();
        redis.closeAfter(place);

        const Ending ending =
            endingOf<Connection::Exception>([&] { store->write(device, ++number); });

        const auto sent = redis.sent();
        const bool isSent = std::ranges::count(sent, "SET", [](const auto& command) {
                                return command.first();
                            }) == 1;
        EXPECT_NE(ending.failure, std::nullopt);
        EXPECT_EQ(timesWritten() - before, isSent ? 1 : 0);
        EXPECT_TRUE(mongo.sent().empty());
        EXPECT_EQ(inRedis(kind), isSent ? number : number - 1);
        store->write(device, ++number);
        EXPECT_EQ(inRedis(kind), number);
    }
}

INSTANTIATE_TEST_SUITE_P(Of, RedisWrittenBytes, testing::ValuesIn(writtenKinds()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_P(RedisBytes, OfAReadMayEndAnywhere) {
    fill(kind, 1);
    const int all = bytesOf([&] { store->read(device); });
    for (const int place : bytePlaces(0, all)) {
        SCOPED_TRACE("after byte " + std::to_string(place));
        redis.closeConnections();
        redis.closeAfter(place);
        int found = 0;

        const Ending ending = endingOf<Connection::Exception>([&] { found = store->read(device); });

        EXPECT_NE(ending.failure, std::nullopt) << found;
        EXPECT_EQ(store->read(device), 1);
    }
}

// Whatever an answer says, the call ends, with a result or with the client's exception.
TEST_P(RedisBytes, OfAnAnswerMayBeDamaged) {
    fill(kind, 1);
    QByteArray sound;
    redis.breakAt(kind.readCommand,
                  answering([&sound](const QByteArray& answer) { return sound = answer; }));
    store->read(device);
    for (const int place : bytePlaces(0, sound.size())) {
        for (const char damage : {'\x01', '\x02', '\x80', '\xff'}) {
            SCOPED_TRACE("byte " + std::to_string(place));
            redis.breakAt(kind.readCommand, [=](Exchange& exchange) {
                QByteArray answer = exchange.answer();
                answer[place] = static_cast<char>(answer[place] ^ damage);
                exchange.reply(answer);
                exchange.close();
            });
            endingOf<Connection::Exception>([&] { store->read(device); });
            redis.breakAt({}, nullptr, 0);
            redis.closeConnections(); // if the damaged answer was taken, it is about to be
            EXPECT_EQ(store->read(device), 1);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Of, RedisBytes, testing::ValuesIn(redisKinds()),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
