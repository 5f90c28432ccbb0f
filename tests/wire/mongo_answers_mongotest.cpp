#include "tests/wire/mongo_wire_fixture.h"

#include "model/documents/dev_value.h"
#include "mongo/store_layout.h"
#include "tests/support/full_listener.h"

#include <mongocxx/v1/exception.hpp>

#include <cstring>

// What the MongoDB driver takes for an answer though it is none, and how it finds and keeps its
// connection. It is the library's own way; a host should know it.
namespace {

using namespace std::chrono_literals;

using test_support::Exchange;
using test_support::FullListener;
using test_support::NameWithAddresses;
using test_support::RedirectedPort;
using test_support::TestSocket;
using test_support::WireProxy;
using testing::AllOf;
using testing::Ge;
using testing::HasSubstr;
using testing::Lt;
using testing::Not;

class MongoAnswers : public MongoWireTest {
protected:
    const MongoStore kind = mongoStore<ValueStore>("Values");
    std::unique_ptr<Store> store = made(kind);

    std::string failureOf(const std::function<void()>& call) {
        return endingOf<mongocxx::v1::exception>(call).failure.value_or("done");
    }
};

// An answer is not compared with the request: after one too many, every call gets the answer to the
// one before.
TEST_F(MongoAnswers, AreOneBehindAfterOneThatCameTwice) {
    const int other = device + 1'000'000;
    store->write(device);
    store->write(other);
    store->write(other);
    proxy.breakAt("find", answering([](const QByteArray& answer) { return answer + answer; }));

    EXPECT_EQ(store->read(device), 1U);
    EXPECT_EQ(store->read(other), 0U)
        << "of those that the first call asked for, none is this one's";
    EXPECT_EQ(store->read(other), 2U) << "as the call before should have found";
    EXPECT_THAT(failureOf([&] {
                    store->write(device);
                    store->read(device);
                }),
                HasSubstr("Invalid reply to find command"));
    EXPECT_EQ(made(kind)->read(device), 2U);
}

TEST_F(MongoAnswers, ToAnotherRequestAreTaken) {
    proxy.breakAt("insert", answering([](QByteArray answer) {
                      const std::int32_t another = 123'456;
                      std::memcpy(answer.data() + 8, &another, sizeof another);
                      return answer;
                  }));

    store->write(device);

    EXPECT_EQ(stored(kind, device), 1);
    EXPECT_EQ(store->read(device), 1U);
}

TEST_F(MongoAnswers, ThatSayNothingAreTakenForSuccess) {
    proxy.breakAt("insert", [](Exchange& exchange) {
        exchange.reply(QByteArray::fromHex("1a000000 00000000 00000000 dd070000"
                                           "00000000 00 0500000000"));
    });

    store->write(device);

    EXPECT_EQ(stored(kind, device), 0);
    endingOf<mongocxx::v1::exception>([&] { store->write(device); });
}

TEST_F(MongoAnswers, ThatPromiseMoreMakeTheObjectUseless) {
    proxy.breakAt("insert", answering([](QByteArray answer) {
                      answer[16] = 2;
                      return answer;
                  }));
    store->write(device);

    for (int i = 0; i < 3; ++i) {
        EXPECT_THAT(failureOf([&] { store->write(device); }), HasSubstr("is in exhaust"));
    }
    EXPECT_EQ(made(kind)->read(device), 1U);
}

TEST_F(MongoAnswers, WithoutTheResultOfAQueryAreAnError) {
    proxy.breakAt("find", [](Exchange& exchange) {
        exchange.answer();
        exchange.reply(QByteArray::fromHex("1a000000 00000000 00000000 dd070000"
                                           "00000000 00 0500000000"));
    });

    EXPECT_THAT(failureOf([&] { store->read(device); }), HasSubstr("Invalid reply to find"));
    EXPECT_EQ(store->read(device), 0U);
}

// A single wrong bit is enough. Only an encrypted connection keeps it away from a host.
TEST_F(MongoAnswers, WithADocumentThatDoesNotEndEndTheProcess) {
    store->write(device);
    proxy.breakAt("find", answering([](QByteArray answer) {
                      const QByteArray name("firstBatch\0", 11);
                      const int document = answer.indexOf(name) + name.size() + 4 + 3;
                      std::int32_t size = 0;
                      std::memcpy(&size, answer.constData() + document, sizeof size);
                      answer[document + size - 1] = 1;
                      return answer;
                  }));

    EXPECT_EXIT(store->read(device), testing::KilledBySignal(SIGABRT), "assertion failed");
}

// The rest of a large result is asked for on the same connection, and not a second time.
TEST_F(MongoAnswers, MissingInTheMiddleOfALargeResultMakeTheReadThrow) {
    constexpr std::size_t more = 150; // than come with the first answer
    for (std::size_t i = 0; i < more; ++i) {
        store->write(device);
    }
    for (const WireFault& fault : brokenConversations()) {
        if (fault.isDone) { // or the server keeps its cursor for the rest
            proxy.breakAt("getMore", fault.deal);
            EXPECT_THAT(failureOf([&] { store->read(device); }),
                        HasSubstr("Failed to send \"getMore\""));
        }
    }
    EXPECT_EQ(store->read(device), more);
}

// A connection that was closed while nobody used it

TEST_F(MongoAnswers, AreLostToAWriteOnAConnectionThatWasClosedJustNow) {
    store->write(device);
    for (const bool resets : {false, true}) {
        store->read(device);
        resets ? proxy.resetConnections() : proxy.closeConnections();
        EXPECT_THAT(failureOf([&] { store->write(device); }), HasSubstr("Failed to send"));
    }
    EXPECT_EQ(stored(kind, device), 1);
    proxy.closeConnections();
    EXPECT_EQ(store->read(device), 1U);
}

// It looks before it uses a connection that has rested for five seconds.
TEST_F(MongoAnswers, AreNotLostAfterARest) {
    for (const bool resets : {false, true}) {
        store->write(device);
        resets ? proxy.resetConnections() : proxy.closeConnections();
        test_support::skipTime(6s);
        store->write(device);
    }
    EXPECT_EQ(stored(kind, device), 4);
}

// More than the sockets' buffers hold, so that the writing itself fails.
TEST_F(MongoAnswers, AreLostWithALargeRequestAndRaiseNoSignal) {
    UplinkStore uplinks(url(), database().name());
    uplinks.read(device);
    proxy.closeAfter(100'000);

    EXPECT_THAT(failureOf([&] { uplinks.writeLarge(device, 7 << 20); }),
                HasSubstr("Failed to send \"insert\""));

    uplinks.write(device);
    EXPECT_EQ(uplinks.read(device), 1U);
}

// What a host has set, or has not

TEST_F(MongoAnswers, AreWaitedForMinutesWithoutASetting) {
    const auto patient = kind.make(proxy.url(), database().name());
    const auto stalling = [](Exchange& exchange) { exchange.stall(); };
    patient->write(device);
    proxy.breakAt("insert", stalling);
    EXPECT_THAT(endingOf<mongocxx::v1::exception>([&] { patient->write(device); }).took,
                AllOf(Ge(5min), Lt(5min + slack)));
    proxy.breakAt("find", stalling, WireProxy::always);
    EXPECT_THAT(endingOf<mongocxx::v1::exception>([&] { patient->read(device); }).took,
                AllOf(Ge(10min), Lt(10min + slack)));
    proxy.breakAt("hello", stalling);
    EXPECT_THAT(endingOf<mongocxx::v1::exception>([&] {
                    kind.make(proxy.url(), database().name())->read(device);
                }).took,
                AllOf(Ge(10s), Lt(10s + slack)));
}

TEST_F(MongoAnswers, AreHadByTheSameCallIfItIsToldToTryMoreThanOnce) {
    const auto patient = kind.make(
        url() + "&serverSelectionTryOnce=false&serverSelectionTimeoutMS=20000", database().name());
    proxy.breakAt("hello", [](Exchange& exchange) { exchange.close(); });

    const Ending ending = endingOf<mongocxx::v1::exception>([&] { patient->write(device); });

    EXPECT_EQ(ending.failure, std::nullopt);
    EXPECT_THAT(ending.took, AllOf(Ge(4s), Lt(pauseAfterAFailedConnect + slack)));
    EXPECT_EQ(stored(kind, device), 1);
}

// Deliberate: where the first collection is, the store counts as laid out. So a host that could not
// create it has to see to the indexes that are missing.
TEST_F(MongoAnswers, MissingToAnIndexLeaveTheLayoutIncomplete) {
    test_support::temporary_database own;
    const mongo::collection_layout layout{layout::eav_values::collection,
                                          layout::eav_values::indexes};
    const auto layOut = [&] {
        mongocxx::v1::client client{mongocxx::v1::uri{url()}};
        mongo::createStore(client.database(own.name()), {layout});
    };
    int created = 0;
    proxy.breakAt(
        "createIndexes",
        [&](Exchange& exchange) {
            ++created < 3 ? exchange.reply(exchange.answer()) : exchange.close();
        },
        3);
    EXPECT_THAT(failureOf(layOut), HasSubstr("createIndexes"));

    EXPECT_EQ(failureOf(layOut), "done");

    EXPECT_EQ(own.indexes(layout.name).size(), 1U + 2U) << "that of the key, and two";
    EXPECT_GT(layout.indexes.size(), 2U);
}

// Secrets

TEST_F(MongoAnswers, ThatDoNotComeTellNoPassword) {
    const std::string secret = "not-to-be-told";
    std::string withPassword = url();
    withPassword.insert(withPassword.find("://") + 3, "meter:" + secret + "@");
    const TestSocket nobody = TestSocket::bound();
    const auto refused = [&] {
        const RedirectedPort refusing(proxy.port(), nobody.port());
        return failureOf([&] { kind.make(withPassword, database().name())->read(device); });
    };
    EXPECT_THAT(refused(), AllOf(HasSubstr("connection refused"), Not(HasSubstr(secret))));
    for (const WireFault& fault : brokenConversations()) {
        for (const char* request : {"hello", "saslStart", "saslContinue", "find"}) {
            proxy.breakAt(request, fault.deal, WireProxy::always);
            const std::string failure =
                failureOf([&] { kind.make(withPassword, database().name())->read(device); });
            EXPECT_THAT(failure, AllOf(Not(HasSubstr("done")), Not(HasSubstr(secret))));
        }
    }
}

// A name with several addresses

class MongoHostName : public MongoWireTest {
protected:
    /// With a server at the second address only.
    void expectToBeFound() {
        const std::string name = "meters.invalid";
        const NameWithAddresses addresses(name, {"127.0.0.2", "127.0.0.1"});
        std::string byName = url();
        byName.replace(byName.find("127.0.0.1"), 9, name);
        const auto start = std::chrono::steady_clock::now();
        ValueStore store(byName, database().name());
        store.write(device);
        EXPECT_EQ(store.read(device), 1U);
        EXPECT_THAT(std::chrono::steady_clock::now() - start, Lt(connectTimeout + slack));
    }
};

TEST_F(MongoHostName, MayHaveAnAddressThatRefusesFirst) {
    const TestSocket refusing = TestSocket::bound("127.0.0.2", proxy.port());
    expectToBeFound();
}

TEST_F(MongoHostName, MayHaveAnAddressThatSwallowsEverythingFirst) {
    const FullListener blackHole("127.0.0.2", proxy.port());
    expectToBeFound();
}

} // namespace
