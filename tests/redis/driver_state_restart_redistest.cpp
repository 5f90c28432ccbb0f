#include "tests/redis/driver_state_fixture.h"
#include "tests/support/eventually.h"
#include "tests/support/record_equality.h"

#include <chrono>
#include <functional>
#include <string>

// Redis was killed, and reads its data back.
namespace {

using namespace std::chrono_literals;
using test_support::eventually;
using testing::HasSubstr;
using namespace test_support::literals;

class RestartedRedis : public DriverStateTest {
protected:
    RestartedRedis() {
        setA(5, 1);
        states.Push(5, false);
        queues->Push(5, queuesWith(1), false);
        server.run({"EVAL",
                    "for i = 1, 500 do redis.call('SET', 'o' .. i, string.rep('x', 200)) end",
                    "0"});
        server.run({"SAVE"});
        server.kill();
        server.startLoading(2ms);
    }

    static model::dl_queues queuesWith(int timeout) {
        model::dl_queues queues;
        queues.dl["q1"_q].timeout = timeout;
        return queues;
    }

    /// False when Redis is not there, which is all that it may be but serving.
    bool isAcknowledged(const std::function<bool()>& operation) {
        try {
            EXPECT_TRUE(operation());
            return true;
        } catch (const RedisClient::Connection::Exception& exception) {
            ++refusals;
            EXPECT_THAT(exception.what(), HasSubstr("LOADING"));
            return false;
        }
    }

    int refusals = 0;
    interfaces::IDriverDLqueue* queues = states.DLqueue();
};

TEST_F(RestartedRedis, NeverGivesAnEmptyState) {
    setA(5, 7);

    ASSERT_TRUE(eventually([&] { return isAcknowledged([&] { return states.Pull(5); }); }));

    EXPECT_GT(refusals, 0);
    EXPECT_EQ(states.GetAll(5), (QJsonObject{{"a"_q, 1}}));
}

TEST_F(RestartedRedis, LeavesTheWorkingCopyWhenItIsNotThereForAPull) {
    setA(5, 7);

    ASSERT_FALSE(isAcknowledged([&] { return states.Pull(5); }));

    EXPECT_EQ(states.GetAll(5), (QJsonObject{{"a"_q, 7}}));
}

TEST_F(RestartedRedis, NeverGivesAnEmptyQueue) {
    model::dl_queues pulled;
    ASSERT_TRUE(eventually([&] {
        return isAcknowledged([&] {
            pulled = queues->Pull(5);
            return true;
        });
    }));

    EXPECT_GT(refusals, 0);
    EXPECT_EQ(pulled, queuesWith(1));
}

TEST_F(RestartedRedis, LosesNoStateThatWasAcknowledged) {
    int n = 1;
    ASSERT_TRUE(eventually([&] {
        setA(5, ++n);
        return isAcknowledged([&] { return states.Push(5, false); });
    }));

    EXPECT_GT(refusals, 0);
    ASSERT_TRUE(eventually([&] { return isAcknowledged([&] { return states.Pull(5); }); }));
    EXPECT_EQ(states.GetAll(5), (QJsonObject{{"a"_q, n}}));
}

TEST_F(RestartedRedis, LosesNoQueueThatWasAcknowledged) {
    int n = 1;
    ASSERT_TRUE(eventually([&] {
        ++n;
        return isAcknowledged([&] { return queues->Push(5, queuesWith(n), false); });
    }));

    EXPECT_GT(refusals, 0);
    model::dl_queues pulled;
    ASSERT_TRUE(eventually([&] {
        return isAcknowledged([&] {
            pulled = queues->Pull(5);
            return true;
        });
    }));
    EXPECT_EQ(pulled, queuesWith(n));
}

TEST_F(RestartedRedis, HasNoDeviceStruckOffThatItStillKnows) {
    ASSERT_FALSE(isAcknowledged([&] { return states.Delete(5); }));
    ASSERT_FALSE(isAcknowledged([&] { return queues->Delete(5); }));
    EXPECT_THROW(states.GetIDs("y"_q, "x"_q), RedisClient::Connection::Exception);
    EXPECT_THROW(states.GetAllStates("y"_q, "x"_q), RedisClient::Connection::Exception);
}

} // namespace
