#include "host/driver_demo.h"

#include "host/demo_mark.h"
#include "host/failure.h"
#include "tests/host/fake_driver_store.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace test_support::literals;

class DriverDemo : public testing::Test {
protected:
    DriverDemo() {
        for (int device = 1; device <= 3; ++device) {
            model::message message;
            message.modem_id = device;
            message.timestamp = QDateTime::fromSecsSinceEpoch(1'800'000'000 + device, Qt::UTC);
            message.tag = "water"_q;
            message.protocol = "wM-Bus"_q;
            message.hw_type = "make"_q;
            message.payload = "\x01\x02"_qba;
            message.snr = device;
            messages.push_back(message);
        }
        // The second message of a device adds no second record.
        messages.push_back(messages.front());
    }

    host::Accounting runState() {
        test_support::FakeDriverState state(stores);
        test_support::FakeDriverState afterwards(stores);
        return host::runStateDemo(state, afterwards, redis, messages, console);
    }
    host::Accounting runQueues() {
        test_support::FakeDlQueue queue(stores);
        return host::runQueueDemo(queue, redis, messages, console);
    }
    host::Accounting runRegistry() {
        test_support::FakeRegistry registry(stores);
        return host::runRegistryDemo(registry, redis, messages, console);
    }

    std::vector<model::message> messages;
    test_support::FakeStores stores;
    test_support::FakeRedisSide redis{stores};
    std::ostringstream output;
    host::Console console{output, host::Console::Kind::Plain};
};

constexpr auto complete = "3 read, 3 stored, 3 read back equal, 0 lost";

TEST_F(DriverDemo, AccountsForTheStateOfEachDevice) {
    EXPECT_EQ(accountingLine(runState()).toStdString(), complete);
}

TEST_F(DriverDemo, LeavesNoState) {
    runState();
    EXPECT_TRUE(stores.redisStates.empty());
    EXPECT_TRUE(stores.durableStates.empty());
}

TEST_F(DriverDemo, FindsAStateThatIsNotRestored) {
    stores.forgetsDurable = true;
    EXPECT_FALSE(isComplete(runState()));
}

TEST_F(DriverDemo, ReplacesTheStateOfABrokenRun) {
    stores.durableStates[2] = host::markedData({{"old"_q, 1}}).object();
    EXPECT_EQ(accountingLine(runState()).toStdString(), complete);
}

TEST_F(DriverDemo, LeavesARealStateAlone) {
    stores.durableStates[2] = {{"real"_q, 1}};
    EXPECT_THROW(runState(), host::Failure);
    EXPECT_EQ(stores.durableStates[2], (QJsonObject{{"real"_q, 1}}));
}

TEST_F(DriverDemo, AccountsForTheQueuesOfEachDevice) {
    EXPECT_EQ(accountingLine(runQueues()).toStdString(), complete);
    EXPECT_TRUE(stores.redisQueues.empty());
    EXPECT_TRUE(stores.durableQueues.empty());
}

TEST_F(DriverDemo, FindsQueuesThatAreNotRestored) {
    stores.forgetsDurable = true;
    EXPECT_FALSE(isComplete(runQueues()));
}

TEST_F(DriverDemo, LeavesARealQueueAlone) {
    model::dl_queues real;
    real.dl["main"_q].elements["1"_q].type = "command"_q;
    stores.redisQueues[2] = real;
    EXPECT_THROW(runQueues(), host::Failure);
    EXPECT_EQ(stores.redisQueues[2].dl.size(), 1);
}

TEST_F(DriverDemo, LeavesALockedDeviceAlone) {
    stores.redisQueues[2].lock = true;
    EXPECT_THROW(runQueues(), host::Failure);
}

TEST_F(DriverDemo, AccountsForTheRegistryEntryOfEachDevice) {
    EXPECT_EQ(accountingLine(runRegistry()).toStdString(), complete);
    EXPECT_TRUE(stores.registry.empty());
}

TEST_F(DriverDemo, LeavesARealRegistryEntryAlone) {
    stores.registry[2] = {2, {"utility"_q}, {}, {}};
    EXPECT_THROW(runRegistry(), host::Failure);
    EXPECT_EQ(stores.registry.size(), 1U);
}

TEST_F(DriverDemo, LeavesARealRegistryEntryWithoutClientsAlone) {
    stores.registry[2] = {2, {}, "protocol"_q, {}};
    EXPECT_THROW(runRegistry(), host::Failure);
}

} // namespace
