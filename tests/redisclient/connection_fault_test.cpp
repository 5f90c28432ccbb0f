#include "redisclient/redisclient.h"
#include "tests/support/eventually.h"
#include "tests/support/fake_peer.h"
#include "tests/support/stopwatch.h"
#include "tests/support/system_calls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>
#include <vector>

// Against peers that only these tests can provide: mute, garrulous or no Redis server at all. How a
// wire breaks is in tests/wire.

namespace {

using namespace std::chrono_literals;

using RedisClient::Connection;
using RedisClient::ConnectionConfig;
using RedisClient::Response;
using test_support::eventually;
using test_support::FakePeer;
using test_support::SlowNameLookup;
using test_support::Stopwatch;
using test_support::TestSocket;
using testing::AllOf;
using testing::Ge;
using testing::HasSubstr;
using testing::Lt;

/// Long enough for a loaded machine, short enough for a failing test.
constexpr int patientMsecs = 30'000;
constexpr int hastyMsecs = 500;

ConnectionConfig configFor(int port, int connectMsecs = patientMsecs,
                           int commandMsecs = patientMsecs) {
    ConnectionConfig config(QStringLiteral("127.0.0.1"), QString(), port, QString());
    config.setTimeouts(connectMsecs, commandMsecs);
    return config;
}

ConnectionConfig hasty(int port) {
    return configFor(port, patientMsecs, hastyMsecs);
}

ConnectionConfig hastyToConnect(int port) {
    return configFor(port, hastyMsecs, patientMsecs);
}

/// That long, and far from the patient time-out.
auto takesTheHastyTime() {
    return AllOf(Ge(std::chrono::milliseconds(hastyMsecs)),
                 Lt(std::chrono::milliseconds(patientMsecs / 3)));
}

/// The message of the exception that a command ends with; fails without one.
std::string failureOf(Connection& connection, const QList<QByteArray>& command = {"GET", "key"},
                      int db = 0) {
    try {
        connection.commandSync(command, db);
    } catch (const Connection::Exception& exception) {
        return exception.what();
    }
    ADD_FAILURE() << "the command was answered";
    return {};
}

/// Why connect() was false.
std::string causeOf(const ConnectionConfig& config) {
    Connection connection(config);
    EXPECT_FALSE(connection.connect());
    EXPECT_FALSE(connection.isConnected());
    return failureOf(connection);
}

// Connecting

TEST(RedisConnecting, FailsForAHostNameWithAZeroCharacter) {
    const QString host = QStringLiteral("127.0.0.1") + QChar::Null + QStringLiteral(".example");

    EXPECT_THAT(causeOf(ConnectionConfig(host)), HasSubstr("zero character"));
}

TEST(RedisConnecting, FailsForAnEmptyHostName) {
    EXPECT_THAT(causeOf(ConnectionConfig(QString())), HasSubstr("empty"));
}

TEST(RedisConnecting, FailsForANameThatCannotBeResolved) {
    const QString tooLongForAName(100, u'x');

    EXPECT_THAT(causeOf(ConnectionConfig(tooLongForAName)), HasSubstr("resolving"));
}

TEST(RedisConnecting, FailsForPortsThatDoNotExist) {
    for (const int port : {-1, 0, 65536}) {
        EXPECT_THAT(causeOf(configFor(port)), HasSubstr("no port " + std::to_string(port)));
    }
}

TEST(RedisConnecting, TimesOutWhenTheServerSaysNothing) {
    const FakePeer peer([](TestSocket& client, int) { client.waitForClosing(); });
    const Stopwatch watch;

    EXPECT_THAT(causeOf(hastyToConnect(peer.port())), HasSubstr("PING: timed out"));
    EXPECT_THAT(watch.elapsed(), takesTheHastyTime());
}

TEST(RedisConnecting, TimesOutWhenTheServerTrickles) {
    const FakePeer peer([](TestSocket& client, int) {
        client.write("+");
        while (!client.waitForClosing(20ms)) {
            client.write("x");
        }
    });
    const Stopwatch watch;

    EXPECT_THAT(causeOf(hastyToConnect(peer.port())), HasSubstr("timed out"));
    EXPECT_THAT(watch.elapsed(), takesTheHastyTime());
}

TEST(RedisConnecting, DoesNotTakeTheTimeOfTheNameLookupOutOfItsOwn) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"));
    const SlowNameLookup slow(2 * std::chrono::milliseconds(hastyMsecs));

    EXPECT_TRUE(Connection(hastyToConnect(peer.port())).connect());
}

TEST(RedisConnecting, FailsAtAPeerThatEchoes) {
    const FakePeer peer([](TestSocket& client, int) {
        for (QByteArray bytes = client.read(); !bytes.isEmpty(); bytes = client.read()) {
            client.write(bytes);
        }
    });

    EXPECT_THAT(causeOf(configFor(peer.port())), HasSubstr("not that of a Redis server"));
}

TEST(RedisConnecting, TellsTheWordsOfAServerThatHasNoRoom) {
    const FakePeer peer([](TestSocket& client, int) {
        client.readCommand();
        client.write("-ERR max number of clients reached\r\n");
    });

    EXPECT_THAT(causeOf(configFor(peer.port())), HasSubstr("max number of clients reached"));
}

class RedisThatKeepsOut : public testing::TestWithParam<const char*> {};

TEST_P(RedisThatKeepsOut, IsOneThatIsNotThere) {
    const FakePeer peer([](TestSocket& client, int) {
        client.readCommand();
        client.write(QByteArray("-") + GetParam() + " and why\r\n");
        client.waitForClosing();
    });

    EXPECT_THAT(causeOf(configFor(peer.port())),
                HasSubstr(std::string("PING: ") + GetParam() + " and why"));
}

INSTANTIATE_TEST_SUITE_P(By, RedisThatKeepsOut,
                         testing::Values("LOADING", "MASTERDOWN", "BUSY", "CLUSTERDOWN", "TRYAGAIN",
                                         "ERR", "NOAUTH", "DENIED", "WHATEVER"));

class RedisThatLetsIn : public testing::TestWithParam<const char*> {};

TEST_P(RedisThatLetsIn, IsTalkedTo) {
    const FakePeer peer([](TestSocket& client, int) {
        client.readCommand();
        client.write(QByteArray("-") + GetParam() + " and why\r\n");
        client.readCommand();
        client.write("+OK\r\n");
    });
    Connection connection(configFor(peer.port()));

    EXPECT_TRUE(connection.connect());
    EXPECT_EQ(connection.commandSync({"SET", "a", "b"}).type(), Response::Status);
}

INSTANTIATE_TEST_SUITE_P(Despite, RedisThatLetsIn, testing::Values("NOPERM", "MISCONF"));

// Deliberate: the name is only a label in CLIENT LIST, and servers refuse blanks in it.
TEST(RedisConnecting, SucceedsWhenTheServerRefusesTheName) {
    const FakePeer peer([](TestSocket& client, int) {
        while (FakePeer::afterPing(client).value(0) == "CLIENT") {
            client.write("-ERR Client names cannot contain spaces\r\n");
        }
    });
    Connection connection(ConnectionConfig(QStringLiteral("127.0.0.1"), QString(), peer.port(),
                                           QStringLiteral("two words")));

    EXPECT_TRUE(connection.connect());
}

/// Nothing where there is no IPv6.
std::unique_ptr<FakePeer> ipv6Peer() {
    try {
        return std::make_unique<FakePeer>(FakePeer::answering("+OK\r\n"), "::1");
    } catch (const std::system_error&) {
        return nullptr;
    }
}

TEST(RedisConnecting, FindsAServerOverIpv6OrSaysThatThereIsNone) {
    const auto peer = ipv6Peer();
    const ConnectionConfig config(QStringLiteral("::1"), QString(),
                                  peer ? peer->port() : TestSocket::unusedPort());

    if (peer) {
        EXPECT_TRUE(Connection(config).connect());
    } else {
        EXPECT_THAT(causeOf(config), testing::AnyOf(HasSubstr("connect: "), HasSubstr("socket: "),
                                                    HasSubstr("resolving the host name: ")));
    }
}

TEST(RedisConnecting, GoesToTheHostThatWasNamed) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"), "127.0.0.2");
    const auto connects = [&](const char* host) {
        return Connection(ConnectionConfig(QString::fromLatin1(host), QString(), peer.port()))
            .connect();
    };

    EXPECT_TRUE(connects("127.0.0.2"));
    EXPECT_FALSE(connects("127.0.0.1"));
}

TEST(RedisConnecting, FindsAServerByName) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"));
    Connection connection(
        ConnectionConfig(QStringLiteral("localhost"), QString(), peer.port(), QString()));

    EXPECT_TRUE(connection.connect());
}

TEST(RedisConnecting, IsDoneOnlyOnce) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"));
    Connection connection(configFor(peer.port()));

    EXPECT_TRUE(connection.connect());
    EXPECT_TRUE(connection.connect());

    EXPECT_EQ(peer.connections(), 1);
}

TEST(RedisConnecting, WaitsAlsoWhenItIsNotToldTo) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"));
    Connection connection(configFor(peer.port()));

    EXPECT_TRUE(connection.connect(false));
    EXPECT_TRUE(connection.isConnected());
}

TEST(RedisConnecting, IsUndoneByDisconnecting) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"));
    Connection connection(configFor(peer.port()));
    connection.connect();

    connection.disconnect();

    EXPECT_FALSE(connection.isConnected());
    EXPECT_EQ(connection.commandSync({"SET", "a", "b"}).type(), Response::Status);
    EXPECT_EQ(peer.connections(), 2);
}

/// Takes connections but is mute until it is told to serve.
class MuteServer {
public:
    int port() const { return m_peer.port(); }
    int connections() const { return m_peer.connections(); }
    void serve() { m_serves = true; }

private:
    std::atomic<bool> m_serves = false;
    FakePeer m_peer{[this](TestSocket& client, int number) {
        if (m_serves) {
            FakePeer::answering("+OK\r\n")(client, number);
        } else {
            client.waitForClosing();
        }
    }};
};

TEST(RedisConnecting, IsNotTriedAgainByTheCommandRightAfterItTimedOut) {
    MuteServer server;
    Connection connection(hastyToConnect(server.port()));
    connection.connect();
    server.serve();

    EXPECT_THAT(failureOf(connection), HasSubstr("GET: not connected: PING: timed out"));
    EXPECT_EQ(server.connections(), 1);
}

TEST(RedisConnecting, IsTriedAgainByTheSecondCommandAfterItTimedOut) {
    MuteServer server;
    Connection connection(hastyToConnect(server.port()));
    connection.connect();
    server.serve();
    failureOf(connection);

    EXPECT_EQ(connection.commandSync({"SET", "a", "b"}).type(), Response::Status);
}

TEST(RedisConnecting, IsTriedAgainByACommandLaterThanASecondAfterItTimedOut) {
    MuteServer server;
    Connection connection(hastyToConnect(server.port()));
    connection.connect();
    const Stopwatch watch;
    server.serve();
    ASSERT_TRUE(eventually([&] { return watch.elapsed() > 1s; }));

    EXPECT_EQ(connection.commandSync({"SET", "a", "b"}).type(), Response::Status);
}

TEST(RedisConnecting, IsForgottenToHaveTimedOutOnceItSucceeds) {
    MuteServer server;
    Connection connection(hastyToConnect(server.port()));
    connection.connect();
    server.serve();
    ASSERT_TRUE(connection.connect());
    connection.disconnect();

    EXPECT_EQ(connection.commandSync({"SET", "a", "b"}).type(), Response::Status);
}

TEST(RedisConnecting, IsTriedAgainByTheCommandRightAfterItWasRefused) {
    const FakePeer peer([](TestSocket& client, int number) {
        if (number > 1) {
            FakePeer::answering("+OK\r\n")(client, number);
        }
    });
    Connection connection(configFor(peer.port()));
    ASSERT_FALSE(connection.connect());

    EXPECT_EQ(connection.commandSync({"SET", "a", "b"}).type(), Response::Status);
}

// Commands

TEST(RedisCommandFailure, NamesHostPortCommandAndCause) {
    const int port = TestSocket::unusedPort();
    Connection connection(configFor(port));

    EXPECT_THAT(failureOf(connection), AllOf(HasSubstr("127.0.0.1:" + std::to_string(port)),
                                             HasSubstr("GET"), HasSubstr("Connection refused")));
}

TEST(RedisCommandFailure, PutsAnIpv6AddressInBrackets) {
    Connection connection(ConnectionConfig(QStringLiteral("::1"), QString(), 0));

    EXPECT_THAT(failureOf(connection), HasSubstr("[::1]:0: "));
}

TEST(RedisCommandFailure, DoesNotTellTheArguments) {
    Connection connection(configFor(TestSocket::unusedPort()));

    const std::string message = failureOf(connection, {"AUTH", "a secret"});

    EXPECT_THAT(message, testing::Not(HasSubstr("secret")));
}

TEST(RedisCommandFailure, TellsTheCauseAfterAHostNameWithAZeroCharacter) {
    Connection connection(ConnectionConfig(QString(QChar::Null)));

    EXPECT_THAT(failureOf(connection), AllOf(HasSubstr("?:6379"), HasSubstr("zero character")));
}

TEST(RedisCommandFailure, IsAnEmptyCommand) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"));
    Connection connection(configFor(peer.port()));

    EXPECT_THAT(failureOf(connection, {}), HasSubstr("at least a name"));
}

TEST(RedisCommandFailure, IsAServerThatDoesNotAnswerInTime) {
    const FakePeer peer([](TestSocket& client, int) {
        FakePeer::afterPing(client);
        client.waitForClosing();
    });
    Connection connection(hasty(peer.port()));
    const Stopwatch watch;

    EXPECT_THAT(failureOf(connection), HasSubstr("timed out"));
    EXPECT_FALSE(connection.isConnected());
    EXPECT_THAT(watch.elapsed(), takesTheHastyTime());
}

TEST(RedisCommandFailure, IsAServerThatTricklesForTooLong) {
    const FakePeer peer([](TestSocket& client, int) {
        FakePeer::afterPing(client);
        client.write("$1000000\r\n");
        while (!client.waitForClosing(20ms)) {
            client.write("x");
        }
    });
    Connection connection(hasty(peer.port()));
    const Stopwatch watch;

    EXPECT_THAT(failureOf(connection), HasSubstr("timed out"));
    EXPECT_THAT(watch.elapsed(), takesTheHastyTime());
}

TEST(RedisCommandFailure, IsAServerThatTalksForTooLong) {
    const FakePeer peer([](TestSocket& client, int) {
        FakePeer::afterPing(client);
        // There is always more to read, and never the end of the line.
        client.write("+");
        const QByteArray more(1 << 20, 'x');
        while (client.write(more)) {
        }
    });
    Connection connection(hasty(peer.port()));
    const Stopwatch watch;

    EXPECT_THAT(failureOf(connection), HasSubstr("timed out"));
    EXPECT_THAT(watch.elapsed(), takesTheHastyTime());
}

TEST(RedisCommandFailure, IsAServerThatDoesNotReadInTime) {
    const FakePeer peer([](TestSocket& client, int) {
        client.readCommand();
        client.write("+PONG\r\n");
        client.holdWithoutReading();
    });
    Connection connection(hasty(peer.port()));
    const QByteArray moreThanSocketsBuffer(64 << 20, 'x');
    const Stopwatch watch;

    EXPECT_THAT(failureOf(connection, {"SET", "key", moreThanSocketsBuffer}),
                HasSubstr("timed out"));
    EXPECT_THAT(watch.elapsed(), takesTheHastyTime());
}

TEST(RedisCommandFailure, DoesNotTryAgainWhenSelectTimedOut) {
    const FakePeer peer([](TestSocket& client, int) {
        FakePeer::afterPing(client);
        client.waitForClosing();
    });
    Connection connection(hasty(peer.port()));
    connection.connect();
    const Stopwatch watch;

    EXPECT_THAT(failureOf(connection, {"GET", "key"}, 3), HasSubstr("timed out"));
    EXPECT_EQ(peer.connections(), 1);
    EXPECT_THAT(watch.elapsed(), takesTheHastyTime());
}

TEST(RedisCommandFailure, LeavesNoLateAnswerToTheNextCommand) {
    const FakePeer peer([](TestSocket& client, int number) {
        FakePeer::afterPing(client);
        if (number == 1) {
            client.waitForClosing(2 * std::chrono::milliseconds(hastyMsecs));
            client.write("+late\r\n");
        } else {
            client.write("+fresh\r\n");
        }
    });
    Connection connection(hasty(peer.port()));
    failureOf(connection);

    EXPECT_EQ(connection.commandSync({"GET", "key"}).getValue(), QVariant(QByteArray("fresh")));
    EXPECT_EQ(peer.connections(), 2);
}

// Shorter than the socket would wait by itself.
TEST(RedisCommandFailure, EndsWithAShortTimeOutToo) {
    constexpr int shortMsecs = 30;
    const FakePeer peer([](TestSocket& client, int) {
        FakePeer::afterPing(client);
        client.waitForClosing();
    });
    const auto elapsed = [&] {
        Connection connection(configFor(peer.port(), patientMsecs, shortMsecs));
        connection.connect();
        const Stopwatch watch;
        EXPECT_THAT(failureOf(connection), HasSubstr("timed out"));
        return watch.elapsed();
    };

    EXPECT_THAT(elapsed(), Ge(std::chrono::milliseconds(shortMsecs)));
    EXPECT_TRUE(eventually([&] { return elapsed() < 3 * std::chrono::milliseconds(shortMsecs); }));
}

// Longer than the socket waits by itself.
TEST(RedisConnection, WaitsForAnAnswerThatTakesItsTime) {
    const FakePeer peer([](TestSocket& client, int) {
        while (!FakePeer::afterPing(client).isEmpty()) {
            client.waitForClosing(300ms);
            client.write("+slow\r\n");
        }
    });
    Connection connection(configFor(peer.port()));

    EXPECT_EQ(connection.commandSync({"GET", "key"}).getValue(), QVariant(QByteArray("slow")));
    EXPECT_EQ(peer.connections(), 1);
}

/// What it says byte by byte in answer to a command; then it stays as it is.
FakePeer::Script dribbling(const QByteArray& answer) {
    return [answer](TestSocket& client, int) {
        while (!FakePeer::afterPing(client).isEmpty()) {
            for (const char byte : answer) {
                client.write(QByteArray(1, byte));
                client.waitForClosing(1ms);
            }
        }
    };
}

class RedisAnnouncement : public testing::TestWithParam<const char*> {
protected:
    /// How the command fails, which must not take until the time-out.
    static std::string failure(const FakePeer::Script& script) {
        const FakePeer peer(script);
        Connection connection(configFor(peer.port()));
        const Stopwatch watch;
        const std::string cause = failureOf(connection);
        EXPECT_THAT(watch.elapsed(), Lt(10s));
        EXPECT_FALSE(connection.isConnected());
        return cause;
    }
};

class RedisAnnouncementOfTooManyBytes : public RedisAnnouncement {};

TEST_P(RedisAnnouncementOfTooManyBytes, IsRefusedBeforeTheyCome) {
    EXPECT_THAT(failure(FakePeer::answering(GetParam())), HasSubstr("longer than 1 GiB"));
    EXPECT_THAT(failure(dribbling(GetParam())), HasSubstr("longer than 1 GiB"));
}

INSTANTIATE_TEST_SUITE_P(Of, RedisAnnouncementOfTooManyBytes,
                         testing::Values("$1073741825\r\n", "$1073741825\r\nx",
                                         "$9223372036854775807\r\n",
                                         "*2\r\n$3\r\nabc\r\n$1073741813\r\n"));

class RedisAnnouncementOfTooManyElements : public RedisAnnouncement {};

TEST_P(RedisAnnouncementOfTooManyElements, IsRefusedBeforeTheyCome) {
    EXPECT_THAT(failure(FakePeer::answering(GetParam())), HasSubstr("too many elements"));
    EXPECT_THAT(failure(dribbling(GetParam())), HasSubstr("too many elements"));
}

INSTANTIATE_TEST_SUITE_P(Of, RedisAnnouncementOfTooManyElements,
                         testing::Values("*16777217\r\n", "*4294967295\r\n",
                                         "*2\r\n*0\r\n*16777215\r\n"));

// The largest are still waited for.
TEST(RedisAnnouncement, OfWhatIsAllowedIsWaitedFor) {
    for (const char* announcement : {"$1073741800\r\n", "*2\r\n$3\r\nabc\r\n$1073741799\r\n",
                                     "*16777216\r\n", "*2\r\n*0\r\n*16777214\r\n"}) {
        const FakePeer peer(FakePeer::answering(announcement));
        Connection connection(hasty(peer.port()));

        EXPECT_THAT(failureOf(connection), HasSubstr("timed out")) << announcement;
    }
}

TEST(RedisAnnouncement, OfAnyLengthIsUnderstoodByteByByte) {
    const FakePeer peer(dribbling("*4\r\n$0\r\n\r\n$-1\r\n$12\r\n123456789012\r\n:7\r\n"));
    Connection connection(configFor(peer.port()));

    const QVariantList expected{QByteArray(""), QVariant(), QByteArray("123456789012"),
                                qlonglong{7}};
    EXPECT_EQ(connection.commandSync({"GET", "key"}).getValue(), QVariant(expected));
}

// Counted for each command anew.
TEST(RedisAnnouncement, IsNotAddedToThatOfTheCommandBefore) {
    const FakePeer bytes([](TestSocket& client, int) {
        FakePeer::afterPing(client);
        client.write('$' + QByteArray::number(1 << 20) + "\r\n" + QByteArray(1 << 20, 'x') +
                     "\r\n");
        FakePeer::afterPing(client);
        client.write("$1073741800\r\n");
        client.waitForClosing();
    });
    Connection connection(hasty(bytes.port()));
    ASSERT_EQ(connection.commandSync({"GET", "key"}).getValue().toByteArray().size(), 1 << 20);
    EXPECT_THAT(failureOf(connection), HasSubstr("timed out"));

    const FakePeer elements([](TestSocket& client, int) {
        FakePeer::afterPing(client);
        client.write("*3\r\n:1\r\n:2\r\n:3\r\n");
        FakePeer::afterPing(client);
        client.write("*16777215\r\n");
        client.waitForClosing();
    });
    Connection other(hasty(elements.port()));
    ASSERT_EQ(other.commandSync({"GET", "key"}).getValue().toList().size(), 3);
    EXPECT_THAT(failureOf(other), HasSubstr("timed out"));
}

class RedisThatDoesNotServe : public testing::TestWithParam<const char*> {};

TEST_P(RedisThatDoesNotServe, GivesNoAnswerAndIsAskedAgainByTheNextCommand) {
    const FakePeer peer([](TestSocket& client, int number) {
        while (!FakePeer::afterPing(client).isEmpty()) {
            client.write(number == 1 ? QByteArray("-").append(GetParam()).append(" now\r\n")
                                     : QByteArray("+OK\r\n"));
        }
    });
    Connection connection(configFor(peer.port()));

    EXPECT_THAT(failureOf(connection, {"SET", "a", "b"}),
                HasSubstr(std::string("SET: ") + GetParam() + " now"));
    EXPECT_FALSE(connection.isConnected());
    EXPECT_EQ(connection.commandSync({"SET", "a", "b"}).type(), Response::Status);
    EXPECT_EQ(peer.connections(), 2);
}

INSTANTIATE_TEST_SUITE_P(Saying, RedisThatDoesNotServe,
                         testing::Values("LOADING", "MASTERDOWN", "BUSY", "CLUSTERDOWN", "TRYAGAIN",
                                         "ERR Protocol error: invalid bulk length"));

class RedisThatRefusesACommand : public testing::TestWithParam<const char*> {};

TEST_P(RedisThatRefusesACommand, GivesThatForAnAnswer) {
    const FakePeer peer(FakePeer::answering(QByteArray("-") + GetParam() + "\r\n"));
    Connection connection(configFor(peer.port()));

    const Response response = connection.commandSync({"SET", "a", "b"});

    EXPECT_EQ(response.errorMessage(), QByteArray(GetParam()));
    EXPECT_TRUE(connection.isConnected());
}

INSTANTIATE_TEST_SUITE_P(Saying, RedisThatRefusesACommand,
                         testing::Values("ERR LOADING", "ERR Protocol", "OOM full", "MISCONF disk",
                                         "READONLY replica", "NOREPLICAS", "BUSYKEY there",
                                         "BUSYGROUP there", "LOADINGS", "loading"));

TEST(RedisConnection, DoesNotTakeSomethingUnaskedForAnAnswer) {
    const FakePeer peer([](TestSocket& client, int number) {
        while (!FakePeer::afterPing(client).isEmpty()) {
            client.write(number == 1 ? "+first\r\n+unasked\r\n" : "+second\r\n");
        }
    });
    Connection connection(configFor(peer.port()));
    connection.commandSync({"GET", "key"});

    EXPECT_EQ(connection.commandSync({"GET", "key"}).getValue(), QVariant(QByteArray("second")));
    EXPECT_EQ(peer.connections(), 2);
}

TEST(RedisConnection, IsNoneAfterSomethingUnasked) {
    for (const auto pause : {0ms, 50ms}) {
        const FakePeer peer([pause](TestSocket& client, int) {
            FakePeer::afterPing(client);
            client.write(pause == 0ms ? "+asked\r\n+unasked\r\n" : "+asked\r\n");
            if (pause != 0ms && !client.waitForClosing(pause)) {
                client.write("+unasked\r\n");
            }
            client.waitForClosing();
        });
        Connection connection(configFor(peer.port()));
        connection.commandSync({"GET", "key"});

        EXPECT_TRUE(eventually([&] { return !connection.isConnected(); })) << pause.count();
    }
}

TEST(RedisConnection, ClosesASocketThatSaidSomethingUnaskedAlsoWhenItGetsNoOther) {
    std::atomic<bool> closed = false;
    const FakePeer peer([&](TestSocket& client, int number) {
        if (number == 1) {
            FakePeer::afterPing(client);
            client.write("+first\r\n+unasked\r\n");
            client.waitForClosing();
            closed = true;
        }
    });
    Connection connection(configFor(peer.port()));
    connection.commandSync({"GET", "key"});

    failureOf(connection);

    EXPECT_TRUE(eventually([&] { return closed.load(); }));
}

TEST(RedisConnection, DoesNotTakeSomethingSentAfterSelectForAnAnswer) {
    const FakePeer peer([](TestSocket& client, int number) {
        FakePeer::afterPing(client);
        client.write(number == 1 ? "+OK\r\n+unasked\r\n" : "+OK\r\n");
        FakePeer::afterPing(client);
        client.write("+asked\r\n");
    });
    Connection connection(configFor(peer.port()));
    connection.connect();

    EXPECT_EQ(connection.commandSync({"GET", "key"}, 3).getValue(), QVariant(QByteArray("asked")));
    EXPECT_EQ(peer.connections(), 2);
}

TEST(RedisConnection, RunsNothingWhenSelectGotAStrangeAnswer) {
    std::atomic<int> commands = 0;
    const FakePeer peer([&](TestSocket& client, int) {
        for (auto command = FakePeer::afterPing(client); !command.isEmpty();
             command = FakePeer::afterPing(client)) {
            commands += command.first() == "SELECT" ? 0 : 1;
            client.write(":1\r\n");
        }
    });
    Connection connection(configFor(peer.port()));

    EXPECT_THAT(failureOf(connection, {"DEL", "key"}, 3), HasSubstr("SELECT"));
    EXPECT_EQ(commands, 0);
}

TEST(RedisConnection, SurvivesAForkedChildThatDestroysItsCopy) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"));
    auto connection = std::make_unique<Connection>(configFor(peer.port()));
    connection->connect();
    if (const pid_t child = ::fork(); child == 0) {
        connection.reset();
        ::_exit(0);
    } else {
        ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    }

    EXPECT_TRUE(connection->isConnected());
    EXPECT_EQ(connection->commandSync({"SET", "a", "b"}).type(), Response::Status);
    EXPECT_EQ(peer.connections(), 1);
}

} // namespace
