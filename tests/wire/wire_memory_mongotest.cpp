#include "tests/wire/mongo_wire_fixture.h"

#include "bench/harness/counting_heap.h"
#include "redisclient/redisclient.h"
#include "tests/support/fake_peer.h"

#include <mongocxx/v1/exception.hpp>

#include <cstring>

// Memory is taken for what comes, not for what is announced.
namespace {

namespace heap = bench::counting_heap;

using RedisClient::Connection;
using RedisClient::ConnectionConfig;
using test_support::FakePeer;
using testing::Lt;

constexpr std::size_t mebibyte = std::size_t{1} << 20;

/// The most that a call holds at once beyond what was held before it.
std::size_t peakOf(const std::function<void()>& call) {
    const std::size_t before = heap::held();
    heap::startPeak();
    call();
    return heap::peak() - before;
}

class RedisMemory : public testing::TestWithParam<QByteArray> {};

TEST_P(RedisMemory, IsNotTakenForAnAnnouncement) {
    const FakePeer peer(FakePeer::answering(GetParam()));
    ConnectionConfig config(QStringLiteral("127.0.0.1"), QString(), peer.port());
    config.setTimeouts(30'000, 300);
    Connection connection(config);
    connection.connect();

    EXPECT_THAT(peakOf([&] {
                    EXPECT_THROW(connection.commandSync({"GET", "key"}), Connection::Exception);
                }),
                Lt(3 * mebibyte));
}

INSTANTIATE_TEST_SUITE_P(Of, RedisMemory,
                         testing::Values("$9223372036854775807\r\n", "$1073741825\r\n",
                                         "$1073741800\r\n", "*16777217\r\n", "*16777216\r\n",
                                         "*4294967295\r\n", QByteArray("*100000\r\n").repeated(128),
                                         QByteArray("*1\r\n").repeated(100'000)));

class MongoMemory : public MongoWireTest {
protected:
    std::size_t peakWithLength(const char* request, std::int32_t length) {
        const auto store = made(mongoStore<ValueStore>(""));
        proxy.breakAt(request, answeringAtLast([length](QByteArray answer) {
                          std::memcpy(answer.data(), &length, sizeof length);
                          return answer;
                      }),
                      test_support::WireProxy::always);
        return peakOf([&] { EXPECT_THROW(store->read(device), mongocxx::v1::exception); });
    }
};

TEST_F(MongoMemory, IsNotTakenForALengthThatIsTooLarge) {
    for (const std::int32_t length : {48'000'001, 0x7fffffff, -1}) {
        EXPECT_THAT(peakWithLength("hello", length), Lt(mebibyte)) << length;
        EXPECT_THAT(peakWithLength("find", length), Lt(mebibyte)) << length;
    }
}

// The driver's own way: as much as the next power of two.
TEST_F(MongoMemory, IsTakenForALengthThatIsAllowed) {
    EXPECT_THAT(peakWithLength("hello", 48'000'000), Lt(65 * mebibyte));
    EXPECT_THAT(peakWithLength("find", 48'000'000), Lt(65 * mebibyte));
}

} // namespace
