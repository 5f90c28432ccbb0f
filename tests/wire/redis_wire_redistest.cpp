#include "tests/wire/redis_wire_fixture.h"

#include "redisclient/redisclient.h"
#include "tests/support/full_listener.h"

#include <mongocxx/v1/exception.hpp>

// What the driver states, the downlink queues and the client registry do when the wire to the Redis
// server breaks.
namespace {

using namespace std::chrono_literals;

using RedisClient::Connection;
using test_support::FullListener;
using test_support::NameWithAddresses;
using test_support::RedirectedPort;
using test_support::TestSocket;
using test_support::WireProxy;
using testing::AllOf;
using testing::Ge;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Lt;
using testing::Not;

WireFault saying(const char* name, const QByteArray& answer, const char* cause) {
    return {name, answeringAtLast([answer](const QByteArray&) { return answer; }), true, false,
            cause};
}

WireFault sayingTooLittle(const char* name, const QByteArray& answer) {
    WireFault fault = saying(name, answer, "timed out waiting for the answer");
    fault.takesTheTimeOut = true;
    return fault;
}

/// What comes in place of an answer.
std::vector<WireFault> noAnswers() {
    return {
        saying("Garbage", "HTTP/1.1 400 Bad Request\r\n\r\n", "Protocol error"),
        saying("LengthFarTooLarge", "$9223372036854775807\r\n", "the answer is longer than 1 GiB"),
        saying("LengthJustTooLarge", "$1073741825\r\n", "the answer is longer than 1 GiB"),
        saying("LengthBeyondAllNumbers", "$99999999999999999999999\r\n", "Bad bulk string length"),
        saying("LengthThatIsNoNumber", "$12x\r\n", "Bad bulk string length"),
        saying("LengthNegative", "$-2\r\n", "Bulk string length out of range"),
        saying("LengthSmallerThanTheText", "$1\r\n{\"n\":7}\r\n", "the length of a text is wrong"),
        sayingTooLittle("LengthLargerThanTheText", "$5000\r\n{\"n\":7}\r\n"),
        sayingTooLittle("LengthOfTheLargestText", "$1073741800\r\n{\"n\":7}\r\n"),
        saying("ElementsTooMany", "*16777217\r\n", "the answer has too many elements"),
        saying("ElementsNegative", "*-2\r\n", "Multi-bulk length out of range"),
        sayingTooLittle("ElementsMissing", "*3\r\n$1\r\na\r\n"),
        saying("NestedTooDeeply", QByteArray("*1\r\n").repeated(1'000'000),
               "the arrays of the answer are nested too deeply"),
    };
}

std::vector<WireFault> redisFaults() {
    std::vector<WireFault> faults = brokenConversations();
    const auto more = noAnswers();
    faults.insert(faults.end(), more.begin(), more.end());
    return faults;
}

class RedisWireBase : public RedisWireTest {
protected:
    explicit RedisWireBase(const RedisKind& kind) : kind(kind) {}

    /// Names the server and the cause, takes the time-out if it has to, and tells no secret.
    void expectToFail(const std::function<void()>& call, const std::string& cause,
                      std::chrono::seconds waited = 0s) const {
        const Ending ending = endingOf<Connection::Exception>(call);
        EXPECT_THAT(ending.failure.value_or("done"),
                    AllOf(HasSubstr("Redis server 127.0.0.1:" + std::to_string(redis.port())),
                          HasSubstr(cause), Not(HasSubstr(secret))));
        EXPECT_THAT(ending.took, AllOf(Ge(waited), Lt(waited + slack)));
    }

    /// What hosts do with the store, and what it comes down to.
    void use(int number) {
        if (kind.isWritten()) {
            store->write(device, number);
        } else {
            EXPECT_EQ(store->read(device), 1);
        }
    }

    void expectToBeRight() {
        redis.breakAt({}, nullptr, 0);
        if (kind.isWritten()) {
            const int before = timesWritten();
            store->write(device, 9);
            EXPECT_EQ(timesWritten(), before + 1);
            EXPECT_TRUE(isDurable(kind, 9));
            EXPECT_EQ(store->read(device), 9);
        } else {
            EXPECT_EQ(store->read(device), 1);
        }
    }

    /// Of the command that use() comes down to.
    QByteArray command() const { return kind.isWritten() ? "SET" : kind.readCommand; }

    const RedisKind kind;
    std::unique_ptr<RedisStore> store = made(kind);
};

class RedisRead : public RedisWireBase,
                  public testing::WithParamInterface<std::tuple<RedisKind, WireFault>> {
protected:
    RedisRead() : RedisWireBase(std::get<0>(GetParam())) {}
    const WireFault& fault = std::get<1>(GetParam());
};

TEST_P(RedisRead, ThrowsAndIsNotAskedASecondTime) {
    fill(kind, 1);
    redis.forget();
    redis.breakAt(kind.readCommand, fault.deal);

    expectToFail([&] { store->read(device); }, std::string(kind.readCommand) + ": " + fault.cause,
                 fault.takesTheTimeOut ? commandTimeout : 0s);

    EXPECT_EQ(redis.sent().back().first(), kind.readCommand);
    EXPECT_EQ(store->read(device), 1);
}

INSTANTIATE_TEST_SUITE_P(With, RedisRead,
                         testing::Combine(testing::ValuesIn(redisKinds()),
                                          testing::ValuesIn(redisFaults())),
                         [](const auto& info) { return rowName(info); });

class RedisWrite : public RedisWireBase,
                   public testing::WithParamInterface<std::tuple<RedisKind, WireFault>> {
protected:
    RedisWrite() : RedisWireBase(std::get<0>(GetParam())) {}
    const WireFault& fault = std::get<1>(GetParam());
};

TEST_P(RedisWrite, ThrowsAndIsNotDoneTwiceAndReachesNoDurableCopy) {
    mongo.forget();
    const int before = timesWritten();
    redis.breakAt("SET", fault.deal);

    expectToFail([&] { store->write(device, 5); }, std::string("SET: ") + fault.cause,
                 fault.takesTheTimeOut ? commandTimeout : 0s);

    EXPECT_EQ(timesWritten() - before, fault.isDone ? 1 : 0);
    EXPECT_EQ(inRedis(kind), fault.isDone ? 5 : 0);
    EXPECT_THAT(mongo.sent(), IsEmpty());
    expectToBeRight();
}

INSTANTIATE_TEST_SUITE_P(With, RedisWrite,
                         testing::Combine(testing::ValuesIn(writtenKinds()),
                                          testing::ValuesIn(redisFaults())),
                         [](const auto& info) { return rowName(info); });

// While the connection is made

struct SetUpCommand {
    const char* name;
};

class RedisIntroduction
    : public RedisWireBase,
      public testing::WithParamInterface<std::tuple<RedisKind, SetUpCommand, WireFault>> {
protected:
    RedisIntroduction() : RedisWireBase(std::get<0>(GetParam())) { fill(kind, 1); }
    const char* const name = std::get<1>(GetParam()).name;
    const WireFault& fault = std::get<2>(GetParam());
};

TEST_P(RedisIntroduction, ThatFailsMakesTheCallThrowWithNothingDone) {
    redis.closeConnections();
    redis.forget();
    redis.breakAt(name, fault.deal);

    expectToFail([&] { use(5); },
                 std::string(command()) + ": not connected: " + name + ": " + fault.cause,
                 fault.takesTheTimeOut ? connectTimeout : 0s);

    EXPECT_EQ(redis.sent().back().first(), name);
    expectToBeRight();
}

INSTANTIATE_TEST_SUITE_P(With, RedisIntroduction,
                         testing::Combine(testing::ValuesIn(redisKinds()),
                                          testing::Values(SetUpCommand{"AUTH"},
                                                          SetUpCommand{"PING"},
                                                          SetUpCommand{"CLIENT"}),
                                          testing::ValuesIn(redisFaults())),
                         [](const auto& info) { return rowName(info); });

/// The queues' first command chooses the database. Where that is lost, the server has not heard of
/// the command itself, which goes over another connection, once.
class RedisSelect : public RedisWireBase,
                    public testing::WithParamInterface<std::tuple<RedisKind, WireFault>> {
protected:
    RedisSelect() : RedisWireBase(std::get<0>(GetParam())) { redis.forget(); }
    int commandsSent() const {
        const auto sent = redis.sent();
        return static_cast<int>(
            std::ranges::count(sent, command(), [](const auto& parts) { return parts.first(); }));
    }
    const WireFault& fault = std::get<1>(GetParam());
};

TEST_P(RedisSelect, ThatFailsIsRepeatedUnlessItTookTheTimeOut) {
    redis.breakAt("SELECT", fault.deal);

    if (fault.takesTheTimeOut) {
        expectToFail([&] { use(5); }, std::string(command()) + ": " + fault.cause, commandTimeout);
        EXPECT_EQ(commandsSent(), 0);
    } else {
        use(5);
        EXPECT_EQ(commandsSent(), 1);
    }
    expectToBeRight();
}

TEST_P(RedisSelect, ThatFailsAgainMakesTheCallThrowWithNothingDone) {
    redis.breakAt("SELECT", fault.deal, WireProxy::always);

    expectToFail([&] { use(5); }, std::string(command()) + ": ",
                 fault.takesTheTimeOut ? commandTimeout : 0s);

    EXPECT_EQ(commandsSent(), 0);
    expectToBeRight();
}

INSTANTIATE_TEST_SUITE_P(With, RedisSelect,
                         testing::Combine(testing::Values(writtenKinds()[1]),
                                          testing::ValuesIn(redisFaults())),
                         [](const auto& info) { return rowName(info); });

// For each store, without a row of the above

class RedisWireOf : public RedisWireBase, public testing::WithParamInterface<RedisKind> {
protected:
    RedisWireOf() : RedisWireBase(GetParam()) { fill(kind, 1); }

    /// Connects anew.
    void expectTwoUsesToBeRight() {
        use(3);
        expectToBeRight();
    }
};

TEST_P(RedisWireOf, MayBringOneByteAtATime) {
    redis.closeConnections();
    const int before = redis.connections();
    redis.breakAt({}, oneByteAtATime, WireProxy::always);

    use(3);
    EXPECT_EQ(store->read(device), kind.isWritten() ? 3 : 1);

    EXPECT_EQ(redis.connections(), before + 1);
}

TEST_P(RedisWireOf, MayHaveBeenClosedMeanwhile) {
    redis.closeConnections();
    expectTwoUsesToBeRight();
}

TEST_P(RedisWireOf, MayHaveBeenResetMeanwhile) {
    redis.resetConnections();
    expectTwoUsesToBeRight();
}

TEST_P(RedisWireOf, MayBringAnAnswerTwice) {
    const int before = redis.connections();
    redis.breakAt(command(), answering([](const QByteArray& answer) { return answer + answer; }));
    use(3);

    expectToBeRight();
    EXPECT_EQ(redis.connections(), before + 1);
}

TEST_P(RedisWireOf, IsMadeAnewAfterItWasRefused) {
    const TestSocket nobody = TestSocket::bound();
    const int before = timesWritten();
    {
        const RedirectedPort refusing(redis.port(), nobody.port());
        redis.closeConnections();
        expectToFail([&] { use(3); },
                     std::string(command()) + ": not connected: connect: Connection refused");
    }
    EXPECT_EQ(timesWritten(), before);
    expectToBeRight();
}

TEST_P(RedisWireOf, IsGivenUpWhenNobodyAnswersTheKnocking) {
    {
        const FullListener blackHole;
        const RedirectedPort silent(redis.port(), blackHole.port());
        redis.closeConnections();
        expectToFail([&] { use(3); },
                     std::string(command()) + ": not connected: connect: Connection timed out",
                     connectTimeout);
    }
    expectToBeRight();
}

INSTANTIATE_TEST_SUITE_P(Of, RedisWireOf, testing::ValuesIn(redisKinds()),
                         [](const auto& info) { return std::string(info.param.name); });

// More than the sockets' buffers hold, so that the writing itself fails.
TEST_F(RedisWireTest, ThatIsClosedInsideALargeRequestRaisesNoSignal) {
    StateStore states(conf(), mongo.url());
    states.write(device, 3);
    redis.closeAfter(100'000);

    const Ending ending =
        endingOf<Connection::Exception>([&] { states.writeLarge(device, 16 << 20); });

    EXPECT_THAT(ending.failure.value_or("done"), HasSubstr("SET: "));
    EXPECT_EQ(states.read(device), 3);
}

// A name with several addresses

class RedisHostName : public RedisWireTest {
protected:
    static constexpr const char* name = "meters.invalid";

    /// With a server at the second address only.
    void expectToBeFound() {
        const NameWithAddresses addresses(name, {"127.0.0.2", "127.0.0.1"});
        redis_conf conf = this->conf();
        conf.host = QString::fromLatin1(name);
        const auto start = std::chrono::steady_clock::now();
        StateStore states(conf, mongo.url());
        states.write(device, 5);
        EXPECT_EQ(states.read(device), 5);
        // Two connections, and each address has its share of the time.
        EXPECT_LT(std::chrono::steady_clock::now() - start, 2 * connectTimeout / 2 + slack);
    }
};

TEST_F(RedisHostName, MayHaveAnAddressThatRefusesFirst) {
    const TestSocket refusing = TestSocket::bound("127.0.0.2", redis.port());
    expectToBeFound();
}

TEST_F(RedisHostName, MayHaveAnAddressThatSwallowsEverythingFirst) {
    const FullListener blackHole("127.0.0.2", redis.port());
    expectToBeFound();
}

// The durable copies, over the wire to the MongoDB server

class DurableCopy : public RedisWireBase,
                    public testing::WithParamInterface<std::tuple<RedisKind, WireFault>> {
protected:
    DurableCopy() : RedisWireBase(std::get<0>(GetParam())) {}
    const WireFault& fault = std::get<1>(GetParam());
    const std::chrono::seconds waited = fault.takesTheTimeOut ? 3s : 0s; // of the URL
};

TEST_P(DurableCopy, MakesAWriteThrowThatRedisHas) {
    mongo.forget();
    mongo.breakAt("update", fault.deal, WireProxy::always);

    const Ending ending = endingOf<mongocxx::v1::exception>([&] { store->write(device, 5); });

    EXPECT_THAT(ending.failure.value_or("done"), HasSubstr("Failed to send \"update\""));
    EXPECT_THAT(ending.took, AllOf(Ge(waited), Lt(waited + slack)));
    EXPECT_EQ(mongo.onlySent().name, "update");
    EXPECT_EQ(inRedis(kind), 5);
    EXPECT_TRUE(isDurable(kind, fault.isDone ? 5 : 0));
    mongo.breakAt({}, nullptr, 0);
    expectToBeRight();
}

TEST_P(DurableCopy, IsAskedForASecondTimeAndThenThrows) {
    store->write(device, 5);
    server().run({"DEL", kind.key(device)}, kind.db);
    mongo.breakAt("find", fault.deal);
    EXPECT_EQ(store->read(device), 5);

    mongo.breakAt("find", fault.deal, WireProxy::always);
    const Ending ending = endingOf<mongocxx::v1::exception>([&] { store->read(device); });

    EXPECT_THAT(ending.failure.value_or("done"), HasSubstr("Failed to send \"find\""));
    EXPECT_THAT(ending.took, AllOf(Ge(2 * waited), Lt(2 * waited + slack)));
    mongo.breakAt({}, nullptr, 0);
    EXPECT_EQ(store->read(device), 5);
}

INSTANTIATE_TEST_SUITE_P(With, DurableCopy,
                         testing::Combine(testing::ValuesIn(writtenKinds()),
                                          testing::ValuesIn(brokenConversations())),
                         [](const auto& info) { return rowName(info); });

} // namespace
