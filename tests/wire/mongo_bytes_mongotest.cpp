#include "tests/wire/byte_places.h"
#include "tests/wire/mongo_wire_fixture.h"

#include <bsoncxx/v1/exception.hpp>
#include <mongocxx/v1/exception.hpp>

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

// The wire to the MongoDB server breaks after so many bytes, or damages one.
namespace {

class MongoBytes : public MongoWireTest, public testing::WithParamInterface<MongoStore> {
protected:
    /// How many bytes a call takes with all that is said before it.
    int bytesOf(const std::function<void(Store&)>& call) const {
        const auto store = made(kind);
        const int before = proxy.bytesPassed();
        call(*store);
        return proxy.bytesPassed() - before;
    }

    /// That the driver does what it should after its call was broken.
    void expectToBeRight(Store& store, int device) {
        test_support::skipTime(pauseAfterAFailedConnect);
        const auto before = stored(kind, device);
        store.write(device);
        EXPECT_EQ(stored(kind, device), before + 1);
        EXPECT_EQ(store.read(device), before + 1);
    }

    const MongoStore& kind = GetParam();
};

TEST_P(MongoBytes, OfAWriteMayEndAnywhere) {
    const int all = bytesOf([this](Store& store) { store.write(device); });
    for (const int place : bytePlaces(0, all)) {
        SCOPED_TRACE("after byte " + std::to_string(place));
        const int device = nextDevice();
        const auto store = made(kind);
        proxy.forget();
        proxy.closeAfter(place);

        const Ending ending = endingOf<mongocxx::v1::exception>([&] { store->write(device); });

        EXPECT_NE(ending.failure, std::nullopt);
        // Done if the server has got all of it, and just once.
        EXPECT_EQ(stored(kind, device), requests("insert"));
        EXPECT_LE(requests("insert"), 1);
        expectToBeRight(*store, device);
    }
}

TEST_P(MongoBytes, OfAReadMayEndAnywhere) {
    made(kind)->write(device);
    const int all = bytesOf([this](Store& store) { store.read(device); });
    for (const int place : bytePlaces(0, all)) {
        SCOPED_TRACE("after byte " + std::to_string(place));
        const auto store = made(kind);
        std::size_t found = 0;
        proxy.forget();
        proxy.closeAfter(place);

        const Ending ending =
            endingOf<mongocxx::v1::exception>([&] { found = store->read(device); });

        // What is lost after the greeting is asked for again.
        EXPECT_EQ(found, ending.failure ? 0U : 1U);
        EXPECT_TRUE(!ending.failure || requests("find") == 0) << *ending.failure;
        test_support::skipTime(pauseAfterAFailedConnect);
        EXPECT_EQ(store->read(device), 1U);
    }
}

/// Each byte of an answer is damaged in turn, in several ways, each in a process of its own: where
/// a document in the answer to a query does not end as it should, the driver ends the process.
class MongoDamage : public MongoBytes {
protected:
    using Call = std::function<void(Store&, int device)>;
    enum End { wellOnly, orByTheDriver };

    /// Whatever an answer says, `call` ends with a result or with an exception of the libraries,
    /// and `next` succeeds on the same object.
    void damageAnswersTo(const char* request, const Call& call, const Call& next, End allowed) {
        constexpr int bodyAt = 21;
        const QByteArray sound = answerTo(request, call);
        for (const int place : bytePlaces(bodyAt, sound.size())) {
            const char damage = "\x01\x80\xff"[place % 3];
            SCOPED_TRACE("byte " + std::to_string(place));
            const int device = nextDevice();
            made(kind)->write(device);
            proxy.breakAt(request, answering([=](QByteArray answer) {
                              if (place < answer.size()) {
                                  answer[place] = static_cast<char>(answer[place] ^ damage);
                              }
                              return answer;
                          }));
            const int status = statusOf(device, call, next);
            proxy.breakAt({}, nullptr, 0);
            EXPECT_TRUE(WIFEXITED(status) ? WEXITSTATUS(status) == 0
                                          : allowed == orByTheDriver && WTERMSIG(status) == SIGABRT)
                << status;
            checkAfterwards(device);
        }
    }

    virtual void checkAfterwards(int device) { EXPECT_EQ(made(kind)->read(device), 1U); }

    static void write(Store& store, int device) { store.write(device); }
    static void read(Store& store, int device) { store.read(device); }

private:
    QByteArray answerTo(const char* request, const Call& call) {
        QByteArray sound;
        proxy.breakAt(request,
                      answering([&sound](const QByteArray& answer) { return sound = answer; }));
        made(kind)->write(device);
        call(*made(kind), device);
        return sound;
    }

    int statusOf(int device, const Call& call, const Call& next) const {
        const pid_t child = ::fork();
        if (child == 0) {
            ::alarm(60);
            const auto store = made(kind);
            try {
                endingOf<mongocxx::v1::exception>([&] { call(*store, device); });
            } catch (const bsoncxx::v1::exception&) {
            } catch (...) {
                ::_exit(1);
            }
            try {
                next(*store, device);
            } catch (...) {
                ::_exit(2);
            }
            ::_exit(0);
        }
        int status = 0;
        EXPECT_EQ(::waitpid(child, &status, 0), child);
        return status;
    }
};

class MongoWriteDamage : public MongoDamage {
protected:
    void checkAfterwards(int device) override { EXPECT_EQ(stored(kind, device), 3); }
};

TEST_P(MongoWriteDamage, LeavesTheWriteDoneOnce) {
    damageAnswersTo("insert", write, write, wellOnly);
}

TEST_P(MongoDamage, OfTheAnswerToAReadHarmsNothingElse) {
    damageAnswersTo("find", read, read, orByTheDriver);
}

// The driver may take the server for another kind then, until it greets again.
TEST_P(MongoDamage, OfTheAnswerToTheGreetingIsOverWithTheObject) {
    damageAnswersTo("hello", read, [](Store&, int) {}, orByTheDriver);
}

const auto nameOf = [](const auto& info) { return std::string(info.param.name); };
INSTANTIATE_TEST_SUITE_P(Of, MongoBytes, testing::ValuesIn(mongoStores()), nameOf);
INSTANTIATE_TEST_SUITE_P(Of, MongoWriteDamage, testing::ValuesIn(mongoStores()), nameOf);
INSTANTIATE_TEST_SUITE_P(Of, MongoDamage, testing::ValuesIn(mongoStores()), nameOf);

} // namespace
