#include "tests/wire/mongo_wire_fixture.h"

#include "tests/support/full_listener.h"

#include <mongocxx/v1/exception.hpp>

#include <cstring>

// What the repositories do when the wire to the MongoDB server breaks.
namespace {

using namespace std::chrono_literals;

using test_support::FullListener;
using test_support::RedirectedPort;
using test_support::TestSocket;
using testing::AllOf;
using testing::Ge;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Lt;

// Where the parts of an answer stand.
constexpr int lengthAt = 0;
constexpr int responseToAt = 8;
constexpr int kindAt = 12;
constexpr int flagsAt = 16;
constexpr int documentAt = 21;
constexpr int firstTypeAt = documentAt + 4;

QByteArray withNumber(QByteArray answer, int at, std::int32_t number) {
    std::memcpy(answer.data() + at, &number, sizeof number);
    return answer;
}

/// An answer with that length before it.
WireFault announcing(const char* name, std::function<std::int32_t(int size)> length,
                     const char* cause, bool takesTheTimeOut = false) {
    return {name, answeringAtLast([length](const QByteArray& answer) {
                return withNumber(answer, lengthAt, length(answer.size()));
            }),
            true, takesTheTimeOut, cause};
}

/// An answer whose document has that length.
WireFault announcingDocument(const char* name, std::function<std::int32_t(int size)> length) {
    return {name, answering([length](const QByteArray& answer) {
                return withNumber(answer, documentAt, length(answer.size() - documentAt));
            }),
            true, false, "malformed server message"};
}

/// Both ways of breaking off, and answers that the driver knows for none.
std::vector<WireFault> mongoFaults() {
    std::vector<WireFault> faults = brokenConversations();
    for (WireFault& fault : faults) {
        fault.cause = "socket error or timeout"; // it tells them apart no further
    }
    const auto fixed = [](std::int32_t length) { return [length](int) { return length; }; };
    const auto more = [](std::int32_t count) { return [count](int size) { return size + count; }; };
    faults.insert(
        faults.end(),
        {
            {"Garbage", answering([](const QByteArray&) {
                 return QByteArray("HTTP/1.1 400 Bad Request\r\n\r\n");
             }),
             true, false, "is not within valid range"},
            announcing("LengthFarTooLarge", fixed(0x7fffffff), "is not within valid range"),
            announcing("LengthJustTooLarge", fixed(48'000'001), "is not within valid range"),
            announcing("LengthLargerThanTheAnswer", more(10), "socket error or timeout", true),
            announcing("LengthOfTheLargestAnswer", fixed(48'000'000), "socket error or timeout",
                       true),
            announcing("LengthSmallerThanTheAnswer", more(-10), "malformed server message"),
            announcing("LengthOfTheHeader", fixed(16), "malformed server message"),
            announcing("LengthSmallerThanTheHeader", fixed(15), "is not within valid range"),
            announcing("LengthNull", fixed(0), "is not within valid range"),
            announcing("LengthNegative", fixed(-1), "is not within valid range"),
            {"UnknownKind",
             answering([](const QByteArray& answer) { return withNumber(answer, kindAt, 77); }),
             true, false, "malformed server message"},
            {"UnknownFlag",
             answering([](const QByteArray& answer) { return withNumber(answer, flagsAt, 4); }),
             true, false, "malformed server message"},
            announcingDocument("DocumentFarTooLarge", fixed(0x7fffffff)),
            announcingDocument("DocumentTooLarge", more(10)),
            announcingDocument("DocumentTooSmall", more(-10)),
            announcingDocument("DocumentNegative", fixed(-1)),
        });
    return faults;
}

class MongoWire : public MongoWireTest,
                  public testing::WithParamInterface<std::tuple<MongoStore, WireFault>> {
protected:
    void expectToBeRight(std::int64_t before) {
        proxy.breakAt({}, nullptr, 0);
        store->write(device);
        EXPECT_EQ(stored(kind, device), before + 1);
        EXPECT_EQ(store->read(device), before + 1);
    }

    const MongoStore& kind = std::get<0>(GetParam());
    const WireFault& fault = std::get<1>(GetParam());
    std::unique_ptr<Store> store = made(kind);
};

TEST_P(MongoWire, MakesAWriteThrowThatIsNotDoneTwice) {
    proxy.breakAt("insert", fault.deal, test_support::WireProxy::always);

    const Ending ending = endingOf<mongocxx::v1::exception>([&] { store->write(device); });

    EXPECT_THAT(ending.failure.value_or("done"),
                AllOf(HasSubstr("Failed to send \"insert\""), HasSubstr(fault.cause)));
    EXPECT_THAT(ending.took, AllOf(Ge(fault.takesTheTimeOut ? socketTimeout : 0s),
                                   Lt((fault.takesTheTimeOut ? socketTimeout : 0s) + slack)));
    EXPECT_EQ(requests("insert"), 1);
    EXPECT_EQ(stored(kind, device), fault.isDone ? 1 : 0);
    EXPECT_THAT(log.lines(), IsEmpty());
    expectToBeRight(fault.isDone ? 1 : 0);
}

TEST_P(MongoWire, LetsAReadSucceedThatIsAskedASecondTime) {
    store->write(device);
    proxy.breakAt("find", fault.deal);
    std::size_t found = 0;

    const Ending ending = endingOf<mongocxx::v1::exception>([&] { found = store->read(device); });

    EXPECT_EQ(ending.failure, std::nullopt);
    EXPECT_EQ(found, 1U);
    EXPECT_THAT(ending.took, Lt((fault.takesTheTimeOut ? socketTimeout : 0s) + slack));
    EXPECT_EQ(requests("find"), 2);
    expectToBeRight(1);
}

TEST_P(MongoWire, MakesAReadThrowWhoseSecondRequestFailsToo) {
    store->write(device);
    log.clear();
    proxy.breakAt("find", fault.deal, test_support::WireProxy::always);

    const Ending ending = endingOf<mongocxx::v1::exception>([&] { store->read(device); });

    EXPECT_THAT(ending.failure.value_or("done"),
                AllOf(HasSubstr("Failed to send \"find\""), HasSubstr(fault.cause)));
    const auto waited = fault.takesTheTimeOut ? 2 * socketTimeout : 0s;
    EXPECT_THAT(ending.took, AllOf(Ge(waited), Lt(waited + slack)));
    EXPECT_EQ(requests("find"), 2);
    EXPECT_THAT(log.lines(), IsEmpty());
    expectToBeRight(1);
}

INSTANTIATE_TEST_SUITE_P(With, MongoWire,
                         testing::Combine(testing::ValuesIn(mongoStores()),
                                          testing::ValuesIn(mongoFaults())),
                         [](const auto& info) { return rowName(info); });

// While the connection is made

/// Breaking off, and answers that are none to the driver's greeting.
std::vector<WireFault> greetingFaults() {
    std::vector<WireFault> faults = brokenConversations();
    for (WireFault& fault : faults) {
        // A reset has several names there, by how far the driver has read when it arrives.
        fault.cause = fault.takesTheTimeOut                       ? "socket timeout calling hello"
                      : std::strncmp(fault.name, "Reset", 5) == 0 ? " calling hello on"
                                                                  : "Server closed connection";
    }
    const auto fixed = [](std::int32_t length) { return [length](int) { return length; }; };
    const auto more = [](std::int32_t count) { return [count](int size) { return size + count; }; };
    const char* invalid = "Invalid reply from server";
    faults.insert(
        faults.end(),
        {
            {"Garbage", answering([](const QByteArray&) {
                 return QByteArray("HTTP/1.1 400 Bad Request\r\n\r\n");
             }),
             true, false, invalid},
            announcing("LengthFarTooLarge", fixed(0x7fffffff), invalid),
            announcing("LengthJustTooLarge", fixed(48'000'001), invalid),
            announcing("LengthLargerThanTheAnswer", more(10), "socket timeout calling hello", true),
            announcing("LengthOfTheLargestAnswer", fixed(48'000'000),
                       "socket timeout calling hello", true),
            announcing("LengthSmallerThanTheAnswer", more(-10), invalid),
            announcing("LengthOfTheHeader", fixed(16), invalid),
            announcing("LengthNegative", fixed(-1), invalid),
            {"UnknownKind",
             answering([](const QByteArray& answer) { return withNumber(answer, kindAt, 77); }),
             true, false, invalid},
        });
    return faults;
}

class MongoGreeting : public MongoWire {
protected:
    /// The call fails with that cause and touches nothing; after the driver's pause all is well.
    void expectToFail(const std::function<void()>& call, const std::string& cause,
                      std::chrono::seconds waited = 0s) {
        const auto before = stored(kind, device);
        const Ending ending = endingOf<mongocxx::v1::exception>(call);
        EXPECT_THAT(ending.failure.value_or("done"),
                    AllOf(HasSubstr("No suitable servers found"), HasSubstr(cause),
                          HasSubstr("'127.0.0.1:" + std::to_string(proxy.port()) + "'")));
        EXPECT_THAT(ending.took, AllOf(Ge(waited), Lt(waited + slack)));
        EXPECT_THAT(log.lines(), IsEmpty());
        EXPECT_EQ(stored(kind, device), before);
    }
};

TEST_P(MongoGreeting, ThatFailsMakesTheCallThrow) {
    proxy.breakAt("hello", fault.deal, test_support::WireProxy::always);
    const auto waited = fault.takesTheTimeOut ? connectTimeout : 0s;

    expectToFail([&] { store->write(device); }, fault.cause, waited);
    test_support::skipTime(pauseAfterAFailedConnect);
    expectToFail([&] { store->read(device); }, fault.cause, waited);

    test_support::skipTime(pauseAfterAFailedConnect);
    expectToBeRight(0);
}

// The driver's own way, for which it has no setting.
TEST_P(MongoGreeting, ThatFailedIsNotTriedAgainForFiveSeconds) {
    proxy.breakAt("hello", fault.deal);
    endingOf<mongocxx::v1::exception>([&] { store->write(device); });

    const Ending ending = endingOf<mongocxx::v1::exception>([&] { store->write(device); });

    EXPECT_THAT(ending.failure.value_or("done"), HasSubstr("No servers yet eligible for rescan"));
    test_support::skipTime(pauseAfterAFailedConnect);
    expectToBeRight(0);
}

INSTANTIATE_TEST_SUITE_P(With, MongoGreeting,
                         testing::Combine(testing::ValuesIn(mongoStores()),
                                          testing::ValuesIn(greetingFaults())),
                         [](const auto& info) { return rowName(info); });

// For each store, without a row of the above

class MongoWireOf : public MongoWireTest, public testing::WithParamInterface<MongoStore> {
protected:
    const MongoStore& kind = GetParam();
    std::unique_ptr<Store> store = made(kind);
};

TEST_P(MongoWireOf, MayBringOneByteAtATime) {
    proxy.breakAt({}, oneByteAtATime, test_support::WireProxy::always);

    store->write(device);

    EXPECT_EQ(store->read(device), 1U);
    EXPECT_EQ(stored(kind, device), 1);
    EXPECT_EQ(proxy.connections(), 1);
}

TEST_P(MongoWireOf, IsMadeAnewAfterItWasRefused) {
    const TestSocket nobody = TestSocket::bound();
    for (const bool isFirst : {true, false}) {
        {
            const RedirectedPort refusing(proxy.port(), nobody.port());
            proxy.closeConnections();
            // The first call on a connection that has been closed meanwhile finds just that.
            endingOf<mongocxx::v1::exception>([&] { store->write(device); });
            test_support::skipTime(pauseAfterAFailedConnect);
            const Ending ending = endingOf<mongocxx::v1::exception>([&] { store->write(device); });
            EXPECT_THAT(ending.failure.value_or("done"),
                        AllOf(HasSubstr("connection refused calling hello"),
                              HasSubstr(std::to_string(proxy.port()))));
            EXPECT_LT(ending.took, slack);
        }
        test_support::skipTime(pauseAfterAFailedConnect);
        store->write(device);
        EXPECT_EQ(store->read(device), isFirst ? 1U : 2U);
    }
    EXPECT_EQ(stored(kind, device), 2);
}

TEST_P(MongoWireOf, IsGivenUpWhenNobodyAnswersTheKnocking) {
    {
        const FullListener blackHole;
        const RedirectedPort silent(proxy.port(), blackHole.port());
        const Ending ending = endingOf<mongocxx::v1::exception>([&] { store->write(device); });
        EXPECT_THAT(ending.failure.value_or("done"),
                    AllOf(HasSubstr("connection timeout calling hello"),
                          HasSubstr(std::to_string(proxy.port()))));
        EXPECT_THAT(ending.took, AllOf(Ge(connectTimeout), Lt(connectTimeout + slack)));
    }
    test_support::skipTime(pauseAfterAFailedConnect);
    store->write(device);
    EXPECT_EQ(store->read(device), 1U);
    EXPECT_EQ(stored(kind, device), 1);
}

INSTANTIATE_TEST_SUITE_P(Of, MongoWireOf, testing::ValuesIn(mongoStores()),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
