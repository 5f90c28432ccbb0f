#include "redisclient/redisclient.h"
#include "tests/support/fake_peer.h"
#include "tests/support/redis_server.h"
#include "tests/support/system_calls.h"

#include <gtest/gtest.h>

#include <signal.h>
#include <sys/time.h>

#include <cerrno>

// Signals that interrupt the system's calls.

namespace {

using RedisClient::Connection;
using RedisClient::ConnectionConfig;
using test_support::FakePeer;
using test_support::Interruptions;
using test_support::RedisServer;
using test_support::SystemCall;

ConnectionConfig configFor(int port) {
    return ConnectionConfig(QStringLiteral("127.0.0.1"), QString(), port);
}

class InterruptedRedisCommand : public testing::TestWithParam<SystemCall> {};

TEST_P(InterruptedRedisCommand, GoesOn) {
    constexpr int times = 3;
    const FakePeer peer(FakePeer::answering("+OK\r\n"));
    Connection connection(configFor(peer.port()));
    connection.connect();
    const Interruptions interruptions(GetParam(), times);

    EXPECT_TRUE(connection.isConnected());
    EXPECT_EQ(connection.commandSync({"SET", "key", "value"}).getValue(),
              QVariant(QByteArray("OK")));

    EXPECT_EQ(interruptions.left(), 0);
    EXPECT_EQ(peer.connections(), 1);
}

INSTANTIATE_TEST_SUITE_P(In, InterruptedRedisCommand,
                         testing::Values(SystemCall::poll, SystemCall::recv, SystemCall::send));

TEST(RedisCommandThatCouldNotBeSent, GoesOverAnotherConnection) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"));
    Connection connection(configFor(peer.port()));
    connection.commandSync({"SET", "key", "value"});
    {
        const Interruptions closed(SystemCall::send, 1, EPIPE);
        EXPECT_EQ(connection.commandSync({"SET", "key", "value"}).getValue(),
                  QVariant(QByteArray("OK")));
        EXPECT_EQ(closed.left(), 0);
    }
    EXPECT_EQ(peer.connections(), 2);
}

TEST(InterruptedRedisConnecting, GoesOn) {
    for (const SystemCall call : {SystemCall::connect, SystemCall::poll}) {
        const FakePeer peer(FakePeer::answering("+OK\r\n"));
        Connection connection(configFor(peer.port()));
        const Interruptions interruptions(call, 1);

        EXPECT_TRUE(connection.connect());

        EXPECT_EQ(interruptions.left(), 0);
        EXPECT_EQ(peer.connections(), 1);
    }
}

/// Interrupts the process again and again for as long as it lives.
class Timer {
public:
    explicit Timer(suseconds_t intervalUsecs) {
        struct sigaction nothing{};
        nothing.sa_handler = [](int) {};
        ::sigaction(SIGALRM, &nothing, &m_before);
        const itimerval interval{{0, intervalUsecs}, {0, intervalUsecs}};
        ::setitimer(ITIMER_REAL, &interval, nullptr);
    }
    ~Timer() {
        const itimerval never{};
        ::setitimer(ITIMER_REAL, &never, nullptr);
        ::sigaction(SIGALRM, &m_before, nullptr);
    }
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

private:
    struct sigaction m_before{};
};

TEST(InterruptedRedisConnection, IsNotMadeAnew) {
    RedisServer server;
    Connection connection(configFor(server.port()));
    connection.connect();
    const int before = server.connections();
    {
        const Timer timer(200);
        for (int i = 0; i < 20'000; ++i) {
            ASSERT_EQ(connection.commandSync({"PING"}, 0).getValue(), QVariant(QByteArray("PONG")));
        }
    }

    EXPECT_EQ(server.connections(), before);
}

} // namespace
