#include "redisclient/redisclient.h"
#include "tests/redisclient/eventually.h"
#include "tests/redisclient/fake_peer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <netinet/in.h>
#include <signal.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <utility>
#include <vector>

// Against peers that only these tests can provide: dead, mute, garrulous or no Redis server at all.

namespace {

using namespace std::chrono_literals;

using RedisClient::Connection;
using RedisClient::ConnectionConfig;
using RedisClient::Response;
using testing::AllOf;
using testing::HasSubstr;
using testing_support::eventually;
using testing_support::FakePeer;
using testing_support::TestSocket;

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
    Connection connection(config, false);
    EXPECT_FALSE(connection.connect());
    EXPECT_FALSE(connection.isConnected());
    return failureOf(connection);
}

int portThatNobodyListensOn() {
    return TestSocket::listenOn(AF_INET, 1).port();
}

// Connecting

TEST(RedisConnecting, FailsWhenNobodyListens) {
    EXPECT_THAT(causeOf(configFor(portThatNobodyListensOn())), HasSubstr("Connection refused"));
}

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

TEST(RedisConnecting, TimesOutWhenTheConnectionIsNeverAccepted) {
    const TestSocket listener = TestSocket::listenOn(AF_INET, 0);
    // Fills the queue; what comes after it gets no answer from the system.
    std::vector<TestSocket> queue;
    for (int i = 0; i < 3; ++i) {
        queue.emplace_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_port = htons(static_cast<in_port_t>(listener.port()));
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        ::connect(queue.back().fd(), reinterpret_cast<sockaddr*>(&address), sizeof address);
    }

    EXPECT_THAT(causeOf(configFor(listener.port(), hastyMsecs)), HasSubstr("timed out"));
}

TEST(RedisConnecting, TimesOutWhenTheServerSaysNothing) {
    const FakePeer peer([](TestSocket& client, int) { client.waitForClosing(); });

    EXPECT_THAT(causeOf(configFor(peer.port(), hastyMsecs)), HasSubstr("PING: timed out"));
}

TEST(RedisConnecting, TimesOutWhenTheServerTrickles) {
    const FakePeer peer([](TestSocket& client, int) {
        client.write("+");
        while (!client.waitForClosing(20ms)) {
            client.write("x");
        }
    });

    EXPECT_THAT(causeOf(configFor(peer.port(), hastyMsecs)), HasSubstr("timed out"));
}

TEST(RedisConnecting, FailsWhenTheServerHangsUp) {
    const FakePeer peer([](TestSocket& client, int) { client.readCommand(); });

    EXPECT_THAT(causeOf(configFor(peer.port())), HasSubstr("closed the connection"));
}

TEST(RedisConnecting, FailsAtAServerOfAnotherKind) {
    const FakePeer peer([](TestSocket& client, int) {
        client.readCommand();
        client.write("HTTP/1.1 400 Bad Request\r\n\r\n");
    });

    EXPECT_THAT(causeOf(configFor(peer.port())), HasSubstr("PING: Protocol error"));
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

TEST(RedisConnecting, SucceedsAtAServerThatIsStillLoading) {
    const FakePeer peer([](TestSocket& client, int) {
        while (!client.readCommand().isEmpty()) {
            client.write("-LOADING Redis is loading the dataset in memory\r\n");
        }
    });
    Connection connection(configFor(peer.port()));

    ASSERT_TRUE(connection.connect());
    EXPECT_TRUE(connection.commandSync({"GET", "key"}).isErrorMessage());
}

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

TEST(RedisConnecting, FindsAServerThatListensOnIpv6) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"), AF_INET6);
    Connection connection(
        ConnectionConfig(QStringLiteral("::1"), QString(), peer.port(), QString()));

    EXPECT_TRUE(connection.connect());
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

TEST(RedisConnecting, IsLeftToTheNextCommandWithoutWaiting) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"));
    Connection connection(configFor(peer.port()), false);

    EXPECT_TRUE(connection.connect(false));
    EXPECT_FALSE(connection.isConnected());

    EXPECT_EQ(connection.commandSync({"SET", "a", "b"}).type(), Response::Status);
}

TEST(RedisConnecting, IsUndoneByDisconnecting) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"));
    Connection connection(configFor(peer.port()), false);
    connection.connect();

    connection.disconnect();

    EXPECT_FALSE(connection.isConnected());
    EXPECT_THAT(failureOf(connection), HasSubstr("not connected"));
}

// Commands

TEST(RedisCommandFailure, NamesHostPortCommandAndCause) {
    const int port = portThatNobodyListensOn();
    Connection connection(configFor(port));

    EXPECT_THAT(failureOf(connection), AllOf(HasSubstr("127.0.0.1:" + std::to_string(port)),
                                             HasSubstr("GET"), HasSubstr("Connection refused")));
}

TEST(RedisCommandFailure, PutsAnIpv6AddressInBrackets) {
    Connection connection(ConnectionConfig(QStringLiteral("::1"), QString(), 0));

    EXPECT_THAT(failureOf(connection), HasSubstr("[::1]:0: "));
}

TEST(RedisCommandFailure, DoesNotTellTheArguments) {
    Connection connection(configFor(portThatNobodyListensOn()));

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

TEST(RedisCommandFailure, IsAConnectionNeverMadeWithoutAutomaticConnection) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"));
    Connection connection(configFor(peer.port()), false);

    EXPECT_THAT(failureOf(connection), HasSubstr("not connected"));
    EXPECT_EQ(peer.connections(), 0);
}

TEST(RedisCommandFailure, IsAConnectionLostWithoutAutomaticConnection) {
    const FakePeer peer([](TestSocket& client, int) {
        client.readCommand();
        client.write("+PONG\r\n");
    });
    Connection connection(configFor(peer.port()), false);
    connection.connect();
    ASSERT_TRUE(eventually([&] { return !connection.isConnected(); }));

    EXPECT_THAT(failureOf(connection), HasSubstr("closed the connection"));
    EXPECT_EQ(peer.connections(), 1);
}

TEST(RedisCommandFailure, IsAServerThatDoesNotAnswerInTime) {
    const FakePeer peer([](TestSocket& client, int) {
        FakePeer::afterPing(client);
        client.waitForClosing();
    });
    Connection connection(hasty(peer.port()));

    EXPECT_THAT(failureOf(connection), HasSubstr("timed out"));
    EXPECT_FALSE(connection.isConnected());
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

    EXPECT_THAT(failureOf(connection), HasSubstr("timed out"));
}

TEST(RedisCommandFailure, IsAServerThatTalksForTooLong) {
    const FakePeer peer([](TestSocket& client, int) {
        FakePeer::afterPing(client);
        // Pushed messages are no answer, however many of them come.
        while (client.write(">1\r\n+message\r\n")) {
        }
    });
    Connection connection(hasty(peer.port()));

    EXPECT_THAT(failureOf(connection), HasSubstr("timed out"));
}

TEST(RedisCommandFailure, IsAServerThatDoesNotReadInTime) {
    const FakePeer peer([](TestSocket& client, int) {
        client.readCommand();
        client.write("+PONG\r\n");
        client.holdWithoutReading();
    });
    Connection connection(hasty(peer.port()));
    const QByteArray moreThanSocketsBuffer(64 << 20, 'x');

    EXPECT_THAT(failureOf(connection, {"SET", "key", moreThanSocketsBuffer}),
                HasSubstr("timed out"));
}

TEST(RedisCommandFailure, DoesNotSendTheCommandThatTimedOutAgain) {
    std::atomic<int> commands = 0;
    const FakePeer peer([&](TestSocket& client, int) {
        while (!FakePeer::afterPing(client).isEmpty()) {
            ++commands;
        }
    });
    Connection connection(hasty(peer.port()));

    failureOf(connection);

    EXPECT_EQ(commands, 1);
}

TEST(RedisCommandFailure, DoesNotTryAgainWhenSelectTimedOut) {
    const FakePeer peer([](TestSocket& client, int) {
        FakePeer::afterPing(client);
        client.waitForClosing();
    });
    Connection connection(hasty(peer.port()));
    connection.connect();

    EXPECT_THAT(failureOf(connection, {"GET", "key"}, 3), HasSubstr("timed out"));
    EXPECT_EQ(peer.connections(), 1);
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

TEST(RedisCommandFailure, IsGarbageInPlaceOfAnAnswer) {
    const FakePeer peer(FakePeer::answering("garbage\r\n"));
    Connection connection(configFor(peer.port()));

    EXPECT_THAT(failureOf(connection), HasSubstr("Protocol error"));
    EXPECT_FALSE(connection.isConnected());
}

TEST(RedisCommandFailure, IsAnAnswerCutShort) {
    const FakePeer peer([](TestSocket& client, int) {
        FakePeer::afterPing(client);
        client.write("$10\r\nhalf");
    });
    Connection connection(configFor(peer.port()));

    EXPECT_THAT(failureOf(connection), HasSubstr("closed the connection"));
}

TEST(RedisCommandFailure, IsAnAnswerOfImpossibleLength) {
    const FakePeer peer([](TestSocket& client, int) {
        FakePeer::afterPing(client);
        client.write("$9223372036854775807\r\nx");
    });
    Connection connection(configFor(peer.port()));

    failureOf(connection);

    EXPECT_FALSE(connection.isConnected());
}

TEST(RedisCommandFailure, IsAnArrayWithTooManyElements) {
    const FakePeer peer(FakePeer::answering("*4294967295\r\n"));
    Connection connection(configFor(peer.port()));

    EXPECT_THAT(failureOf(connection), HasSubstr("too many elements"));
}

TEST(RedisCommandFailure, IsATreeWithTooManyElements) {
    const FakePeer peer(FakePeer::answering("*2\r\n*0\r\n*16777215\r\n"));
    Connection connection(configFor(peer.port()));

    EXPECT_THAT(failureOf(connection), HasSubstr("too many elements"));
}

TEST(RedisCommandFailure, IsAnAnswerNestedTooDeeply) {
    const FakePeer peer(FakePeer::answering(QByteArray("*1\r\n").repeated(1'000'000)));
    Connection connection(configFor(peer.port()));

    EXPECT_THAT(failureOf(connection), HasSubstr("nested too deeply"));
}

TEST(RedisCommandFailure, LetsAConnectionGoOnFromTheStart) {
    const FakePeer peer([](TestSocket& client, int number) {
        while (!FakePeer::afterPing(client).isEmpty()) {
            client.write(number == 1 ? "garbage\r\n" : "+OK\r\n");
        }
    });
    Connection connection(configFor(peer.port()));
    failureOf(connection);

    EXPECT_EQ(connection.commandSync({"GET", "key"}).getValue(), QVariant(QByteArray("OK")));
}

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

TEST(RedisConnection, GivesItsConversationAwayWhenMoved) {
    const FakePeer peer(FakePeer::answering("+OK\r\n"));
    Connection connection(configFor(peer.port()));
    connection.connect();

    Connection moved(std::move(connection));

    EXPECT_EQ(moved.commandSync({"GET", "key"}).getValue(), QVariant(QByteArray("OK")));
    EXPECT_EQ(peer.connections(), 1);
}

// SIGPIPE

std::atomic<int> brokenPipes = 0;

/// Counts the signal for as long as it lives.
class BrokenPipeCounter {
public:
    BrokenPipeCounter() {
        struct sigaction counting{};
        counting.sa_handler = [](int) { ++brokenPipes; };
        ::sigaction(SIGPIPE, &counting, &m_before);
    }
    ~BrokenPipeCounter() { ::sigaction(SIGPIPE, &m_before, nullptr); }
    BrokenPipeCounter(const BrokenPipeCounter&) = delete;
    BrokenPipeCounter& operator=(const BrokenPipeCounter&) = delete;

private:
    struct sigaction m_before{};
};

TEST(RedisConnection, RaisesNoSignalWhenTheServerClosesUnderACommand) {
    const FakePeer peer([](TestSocket& client, int) {
        client.readCommand();
        client.write("+PONG\r\n");
        client.read();
        // In this order the next write of the client finds a broken pipe and not a reset.
        client.endWriting();
    });
    const BrokenPipeCounter counter;
    Connection connection(configFor(peer.port()));
    const QByteArray moreThanSocketsBuffer(64 << 20, 'x');

    failureOf(connection, {"SET", "key", moreThanSocketsBuffer});

    EXPECT_EQ(brokenPipes, 0);
}

} // namespace
