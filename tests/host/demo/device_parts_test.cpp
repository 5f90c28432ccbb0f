#include "host/demo/demo_parts.h"

#include "host/failure.h"
#include "tests/host/demo/fake_driver_store.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace test_support::literals;

class DeviceParts : public testing::Test {
protected:
    DeviceParts() {
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
        return runPart(host::statePart(state, afterwards, redis, messages), console);
    }
    host::Accounting runQueues() {
        test_support::FakeDlQueue queue(stores);
        return runPart(host::queuePart(queue, redis, messages), console);
    }
    host::Accounting runRegistry() {
        test_support::FakeRegistry registry(stores);
        return runPart(host::registryPart(registry, redis, messages), console);
    }

    std::vector<model::message> messages;
    test_support::FakeStores stores;
    test_support::FakeRedisSide redis{stores};
    std::ostringstream output;
    host::Console console{output, host::Console::Kind::Plain};
};

constexpr auto complete = "3 read, 3 stored, 3 read back equal, 0 lost";

TEST_F(DeviceParts, AccountsForTheStateOfEachDevice) {
    EXPECT_EQ(accountingLine(runState()).toStdString(), complete);
}

TEST_F(DeviceParts, TakeTheNewestMessageOfADevice) {
    messages.back().timestamp = messages.front().timestamp.addSecs(-60);
    messages.back().tag = "older"_q;
    EXPECT_EQ(host::buildStates(messages).front().values["tag"_q], QJsonValue("water"_q));
}

TEST_F(DeviceParts, LeavesNoState) {
    runState();
    EXPECT_TRUE(stores.redisStates.empty());
    EXPECT_TRUE(stores.durableStates.empty());
}

TEST_F(DeviceParts, FindsAStateThatIsNotRestored) {
    stores.forgetsDurable = true;
    EXPECT_FALSE(isComplete(runState()));
}

TEST_F(DeviceParts, ReplacesTheStateOfABrokenRun) {
    stores.durableStates[2] = host::marked({{"old"_q, 1}});
    EXPECT_EQ(accountingLine(runState()).toStdString(), complete);
}

TEST_F(DeviceParts, LeavesARealStateAlone) {
    stores.durableStates[2] = {{"real"_q, 1}};
    EXPECT_THROW(runState(), host::Failure);
    EXPECT_EQ(stores.durableStates[2], (QJsonObject{{"real"_q, 1}}));
}

TEST_F(DeviceParts, AccountsForTheQueuesOfEachDevice) {
    EXPECT_EQ(accountingLine(runQueues()).toStdString(), complete);
    EXPECT_TRUE(stores.redisQueues.empty());
    EXPECT_TRUE(stores.durableQueues.empty());
}

TEST_F(DeviceParts, FindsQueuesThatAreNotRestored) {
    stores.forgetsDurable = true;
    EXPECT_FALSE(isComplete(runQueues()));
}

TEST_F(DeviceParts, LeavesARealQueueAlone) {
    model::dl_queues real;
    real.dl["main"_q].elements["1"_q].type = "command"_q;
    stores.redisQueues[2] = real;
    EXPECT_THROW(runQueues(), host::Failure);
    EXPECT_EQ(stores.redisQueues[2].dl.size(), 1);
}

TEST_F(DeviceParts, LeavesARealQueueWithoutElementsAlone) {
    stores.redisQueues[2].dl["main"_q].repeat = 1;
    EXPECT_THROW(runQueues(), host::Failure);
    EXPECT_EQ(stores.redisQueues[2].dl.size(), 1);
}

TEST_F(DeviceParts, LeavesALockedDeviceAlone) {
    stores.redisQueues[2].lock = true;
    EXPECT_THROW(runQueues(), host::Failure);
}

TEST_F(DeviceParts, AccountsForTheRegistryEntryOfEachDevice) {
    EXPECT_EQ(accountingLine(runRegistry()).toStdString(), complete);
    EXPECT_TRUE(stores.registry.empty());
}

TEST_F(DeviceParts, LeavesARealRegistryEntryAlone) {
    stores.registry[2] = {2, {"utility"_q}, {}, {}};
    EXPECT_THROW(runRegistry(), host::Failure);
    EXPECT_EQ(stores.registry.size(), 1U);
}

TEST_F(DeviceParts, LeavesARealRegistryEntryWithoutClientsAlone) {
    stores.registry[2] = {2, {}, "protocol"_q, {}};
    EXPECT_THROW(runRegistry(), host::Failure);
}

} // namespace
