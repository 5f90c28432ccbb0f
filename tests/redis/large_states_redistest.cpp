// A hundred megabytes in one state or queue, and a million devices in one Redis.

#include "tests/redis/driver_state_fixture.h"
#include "tests/support/log_capture.h"
#include "tests/support/record_equality.h"

#include <mongocxx/v1/exception.hpp>

#include <QFile>

using namespace test_support::literals;

namespace {

constexpr int hundredMegabytes = 100 * 1000 * 1000;

class LargeStates : public DriverStateTest {
protected:
    static QString largeText() { return QString(hundredMegabytes, u'x'); }

    /// Resident memory of this process, in megabytes.
    static int usedMegabytes() {
        QFile status("/proc/self/status"_q);
        status.open(QIODevice::ReadOnly);
        for (const QByteArray& line : status.readAll().split('\n')) {
            if (line.startsWith("VmRSS:")) {
                return line.simplified().split(' ')[1].toInt() / 1024;
            }
        }
        return 0;
    }

    /// States of the devices 0 to count - 1 under the key y:x:DEVICE, made by the server itself.
    void makeStates(int count) {
        server.run({"EVAL",
                    "for i = 0, ARGV[1] - 1 do redis.call('SET', 'y:x:' .. i, '{\"a\":' .. i .. "
                    "'}') end",
                    "0", QByteArray::number(count)});
    }
};

TEST_F(LargeStates, OfAHundredMegabytesComeBack) {
    states.SetValueAsVariant(7, "v"_q, QJsonObject{{"text"_q, largeText()}});
    EXPECT_TRUE(states.Push(7, false));
    const QJsonObject pushed = states.GetAll(7);
    states.SetValueAsVariant(7, "v"_q, QJsonObject{});

    EXPECT_TRUE(states.Pull(7));
    EXPECT_TRUE(states.GetAll(7) == pushed);
}

// Redis has it by then; MongoDB has what it had.
TEST_F(LargeStates, BeyondTheDurableStoreStayInRedisAndThrow) {
    setA(7, 1);
    states.Push(7, true);
    states.SetValueAsVariant(7, "v"_q, QJsonObject{{"text"_q, largeText()}});

    try {
        states.Push(7, true);
        ADD_FAILURE() << "nothing was thrown";
    } catch (const mongocxx::v1::exception& refusal) {
        EXPECT_THAT(refusal.what(), testing::HasSubstr("too large"));
    }

    EXPECT_GT(server.run({"STRLEN", "drv:7"}).toInt(), hundredMegabytes);
    EXPECT_EQ(database.count("states", R"({"_id": 7, "state": {"a": 1.0}})"), 1);
    states.Pull(7);
    EXPECT_TRUE(states.GetAll(7).value("v"_q).toObject().value("text"_q).toString() == largeText());
}

TEST_F(LargeStates, OfQueuesComeBackAndThrowBeyondTheDurableStore) {
    model::dl_queues queues;
    queues.dl["q"_q].elements["e"_q].data = QJsonObject{{"text"_q, largeText()}};

    EXPECT_TRUE(states.DLqueue()->Push(7, queues, false));
    EXPECT_TRUE(states.DLqueue()->Pull(7) == queues);
    EXPECT_THROW(states.DLqueue()->Push(7, queues, true), mongocxx::v1::exception);
    EXPECT_TRUE(states.DLqueue()->Pull(7) == queues);
    EXPECT_EQ(database.count("dl_queues"), 0);
}

// Which is 512 MB where nobody has set less; the server closes the connection then.
TEST_F(LargeStates, BeyondWhatRedisTakesThrow) {
    server.run({"CONFIG", "SET", "proto-max-bulk-len", "1mb"});
    setA(7, 1);
    states.Push(7, false);
    states.SetValueAsVariant(7, "v"_q, QJsonObject{{"text"_q, largeText()}});

    EXPECT_THROW(states.Push(7, true), RedisClient::Connection::Exception);

    EXPECT_EQ(inRedis("drv:7"), R"({"a":1})");
    EXPECT_EQ(database.count("states"), 0);
    states.Pull(7);
    EXPECT_EQ(states.GetAll(7), (QJsonObject{{"a"_q, 1}}));
}

TEST_F(LargeStates, OfAMillionDevicesAreAllListedAndRead) {
    constexpr int devices = 1'000'000;
    makeStates(devices);
    redis_conf direct = conf();
    direct.port = server.port();
    redis::DriverStateRedis all{direct, test_support::mongoUrl()};

    const int before = usedMegabytes();
    EXPECT_GE(all.GetIDs("x"_q, "y"_q).size(), devices);
    {
        const auto found = all.GetAllStates("x"_q, "y"_q);
        ASSERT_EQ(found->size(), devices);
        EXPECT_EQ(found->value(devices - 1), (QJsonObject{{"a"_q, devices - 1}}));
        std::cout << "a million states take " << usedMegabytes() - before << " MB" << std::endl;
    }
    const int once = usedMegabytes();
    EXPECT_EQ(all.GetAllStates("x"_q, "y"_q)->size(), devices);
    const int twice = usedMegabytes();
    std::cout << "in use before, after the first and after the second time: " << before << ' '
              << once << ' ' << twice << " MB" << std::endl;
    EXPECT_LT(twice, once + 200) << "what was read stays in memory";
}

} // namespace
