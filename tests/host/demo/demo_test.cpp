#include "host/demo/demo.h"

#include "host/failure.h"
#include "host/records/demo_mark.h"
#include "tests/host/demo/fake_factory.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QBuffer>
#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace {

using namespace test_support::literals;

/// Three telegrams, each with one word of status, and four readings of one meter.
host::DemoInput sampleInput() {
    host::DemoInput input;
    for (int number = 1; number <= 3; ++number) {
        host::Telegram telegram;
        telegram.lineNumber = number;
        telegram.payload = "\x01\x02"_qba;
        telegram.deviceNumber = number;
        telegram.meterMake = "make"_q;
        telegram.medium = "water"_q;
        telegram.decoded = {{"status"_q, "LEAK"_q}};
        input.telegrams.records.push_back(telegram);
    }
    const auto serial = "4530303434303037313331363530363138"_q;
    input.readings.records = {{1, 100, "0-0:96.1.1"_q, serial, {}},
                              {2, 100, "1-0:1.8.1"_q, 1.5, "kWh"_q},
                              {3, 200, "1-0:1.8.1"_q, 2.5, "kWh"_q},
                              {4, 300, "1-0:1.8.1"_q, 3.5, "kWh"_q}};
    input.start = QDateTime::fromSecsSinceEpoch(1'800'000'000, Qt::UTC);
    return input;
}

class Demo : public testing::Test {
protected:
    bool run() {
        const host::DemoStores stores(factory, {});
        return runParts(host::demoParts(stores, redis, sampleInput()), console);
    }

    void clear() {
        const host::DemoStores stores(factory, {});
        clearParts(host::demoParts(stores, redis, sampleInput()), console);
    }

    /// Expects the run to be told from a good one, and each kind to be accounted for as it is with
    /// a good store but for the lines that are given.
    void expectIncomplete(const std::map<std::string, std::string>& expected) {
        EXPECT_FALSE(run());
        auto accounts = complete;
        for (const auto& [kind, account] : expected) {
            accounts[kind] = account;
        }
        expectAccounts(accounts);
    }

    void expectAccounts(const std::map<std::string, std::string>& accounts) const {
        for (const auto& [kind, account] : accounts) {
            EXPECT_NE(output.str().find('\n' + kind + ": " + account + '\n'), std::string::npos)
                << kind << ": " << account << "\nis not in\n"
                << output.str();
        }
    }

    const std::map<std::string, std::string> complete = {
        {"uplink messages", "3 read, 3 stored, 3 read back equal, 0 lost"},
        {"meter readings", "4 read, 4 stored, 4 read back equal, 0 lost"},
        {"events", "3 found, 3 stored, 3 read back equal, 0 lost"},
        {"downlink commands", "3 issued, 3 stored, 3 read back equal, 0 lost"},
        {"driver states", "3 kept, 3 stored, 3 read back equal, 0 lost"},
        {"downlink queues", "3 made, 3 stored, 3 read back equal, 0 lost"},
        {"registry entries", "3 made, 3 stored, 3 read back equal, 0 lost"},
    };
    test_support::FakeFactory factory;
    test_support::FakeRedisSide redis{factory.stores};
    std::ostringstream output;
    host::Console console{output, host::Console::Kind::Plain};
};

/// What the stores can do to a record.
constexpr auto lose = [](auto& stored) { stored.pop_back(); };
constexpr auto repeat = [](auto& stored) { stored.push_back(stored.back()); };

/// Does it to the record that is stored as number `count`.
template <class Spoil>
auto atCount(std::size_t count, Spoil spoil) {
    return [=](auto& stored) {
        if (stored.size() == count) {
            spoil(stored);
        }
    };
}

TEST_F(Demo, AccountsForEveryKind) {
    EXPECT_TRUE(run());
    expectAccounts(complete);
}

TEST_F(Demo, LeavesNothingThatDoesNotExpire) {
    run();
    EXPECT_TRUE(factory.stores.redisStates.empty());
    EXPECT_TRUE(factory.stores.durableStates.empty());
    EXPECT_TRUE(factory.stores.redisQueues.empty());
    EXPECT_TRUE(factory.stores.durableQueues.empty());
    EXPECT_TRUE(factory.stores.registry.empty());
}

TEST_F(Demo, DeletesAllThatItHasStoredWhenAsked) {
    run();
    factory.stores.durableStates[1] = host::marked({});
    clear();
    EXPECT_TRUE(factory.uplinks.stored.empty());
    EXPECT_TRUE(factory.downlinks.stored.empty());
    EXPECT_TRUE(factory.eav.storedValues.empty());
    EXPECT_TRUE(factory.eav.storedEvents.empty());
    EXPECT_TRUE(factory.stores.durableStates.empty());
}

TEST_F(Demo, NoticesALostMessage) {
    factory.uplinks.afterSave = atCount(3, lose);
    expectIncomplete({{"uplink messages", "3 read, 3 stored, 2 read back equal, 1 lost"}});
}

TEST_F(Demo, NoticesAnAlteredMessage) {
    factory.uplinks.afterSave = atCount(3, [](auto& stored) { ++stored.back().rssi; });
    expectIncomplete(
        {{"uplink messages", "3 read, 3 stored, 2 read back equal, 0 lost, 1 different"}});
}

TEST_F(Demo, NoticesARepeatedMessage) {
    factory.uplinks.afterSave = atCount(3, repeat);
    // By device, in both periods and by tag.
    expectIncomplete(
        {{"uplink messages", "3 read, 3 stored, 3 read back equal, 0 lost, 4 unexpected"}});
}

TEST_F(Demo, NoticesALostValue) {
    factory.eav.afterSave = atCount(4, lose);
    // The last of the energy register: another one is returned as its last.
    expectIncomplete(
        {{"meter readings", "4 read, 4 stored, 3 read back equal, 1 lost, 1 unexpected"}});
}

TEST_F(Demo, NoticesAnAlteredValue) {
    factory.eav.afterSave = atCount(4, [](auto& stored) { stored.back().value = 3.25; });
    expectIncomplete(
        {{"meter readings", "4 read, 4 stored, 3 read back equal, 0 lost, 1 different"}});
}

TEST_F(Demo, NoticesARepeatedValue) {
    factory.eav.afterSave = atCount(4, [](auto& stored) { stored.push_front(stored.back()); });
    EXPECT_FALSE(run());
}

TEST_F(Demo, NoticesALostEvent) {
    factory.eav.afterSaveEvents = atCount(3, lose);
    expectIncomplete({{"events", "3 found, 3 stored, 2 read back equal, 1 lost"}});
}

TEST_F(Demo, NoticesAnAlteredEvent) {
    factory.eav.afterSaveEvents = atCount(3, [](auto& stored) { ++stored.back().parameter; });
    expectIncomplete({{"events", "3 found, 3 stored, 2 read back equal, 0 lost, 1 different"}});
}

TEST_F(Demo, NoticesARepeatedEvent) {
    factory.eav.afterSaveEvents = atCount(3, repeat);
    EXPECT_FALSE(run());
}

TEST_F(Demo, NoticesALostCommand) {
    factory.downlinks.afterSave = atCount(3, lose);
    expectIncomplete({{"downlink commands", "3 issued, 3 stored, 2 read back equal, 1 lost"}});
}

TEST_F(Demo, NoticesAnAlteredCommand) {
    factory.downlinks.afterSave = atCount(3, [](auto& stored) { ++stored.back().timeout; });
    expectIncomplete(
        {{"downlink commands", "3 issued, 3 stored, 2 read back equal, 0 lost, 1 different"}});
}

TEST_F(Demo, NoticesARepeatedCommand) {
    factory.downlinks.afterSave = atCount(3, [](auto& stored) {
        stored.push_back(stored.back());
        stored.back().db_id = "ffffffffffffffffffffffff"_q;
    });
    EXPECT_FALSE(run());
}

TEST_F(Demo, NoticesALostState) {
    factory.stores.spoil = [](auto& stores) {
        stores.redisStates.erase("kelvro-host-demo:state:2"_q);
        stores.durableStates.erase(2);
    };
    expectIncomplete({{"driver states", "3 kept, 3 stored, 2 read back equal, 1 lost"}});
}

TEST_F(Demo, NoticesAStateThatIsStoredDurablyOnly) {
    factory.stores.spoil = [](auto& stores) {
        stores.redisStates.erase("kelvro-host-demo:state:2"_q);
    };
    expectIncomplete(
        {{"driver states", "3 kept, 3 stored, 2 read back equal, 0 lost, 1 different"}});
}

TEST_F(Demo, NoticesAnAlteredState) {
    factory.stores.spoil = [](auto& stores) {
        if (stores.durableStates.contains(2)) {
            stores.durableStates[2]["filling"_q] = 0.5;
        }
    };
    expectIncomplete(
        {{"driver states", "3 kept, 3 stored, 2 read back equal, 0 lost, 1 different"}});
}

TEST_F(Demo, NoticesAStateThatNobodyKept) {
    factory.stores.spoil = [](auto& stores) {
        stores.redisStates["kelvro-host-demo:state:9"_q] = {{"a"_q, 1}};
    };
    expectIncomplete(
        {{"driver states", "3 kept, 3 stored, 3 read back equal, 0 lost, 1 unexpected"}});
}

TEST_F(Demo, NoticesALostQueue) {
    factory.stores.spoil = [](auto& stores) {
        stores.redisQueues.erase(2);
        stores.durableQueues.erase(2);
    };
    expectIncomplete({{"downlink queues", "3 made, 3 stored, 2 read back equal, 1 lost"}});
}

TEST_F(Demo, NoticesAnAlteredQueue) {
    factory.stores.spoil = [](auto& stores) {
        if (stores.durableQueues.contains(2)) {
            stores.durableQueues[2].lock = !stores.redisQueues[2].lock;
        }
    };
    expectIncomplete(
        {{"downlink queues", "3 made, 3 stored, 2 read back equal, 0 lost, 1 different"}});
}

TEST_F(Demo, NoticesAQueueThatIsStoredDurablyOnly) {
    factory.stores.spoil = [](auto& stores) { stores.redisQueues.erase(2); };
    expectIncomplete(
        {{"downlink queues", "3 made, 3 stored, 2 read back equal, 0 lost, 1 different"}});
}

TEST_F(Demo, NoticesALostRegistryEntry) {
    factory.stores.spoil = [](auto& stores) { stores.registry.erase(2); };
    expectIncomplete({{"registry entries", "3 made, 3 stored, 2 read back equal, 1 lost"}});
}

TEST_F(Demo, NoticesAnAlteredRegistryEntry) {
    factory.stores.spoil = [](auto& stores) {
        if (stores.registry.contains(2)) {
            stores.registry[2].protocol.clear();
        }
    };
    expectIncomplete(
        {{"registry entries", "3 made, 3 stored, 2 read back equal, 0 lost, 1 different"}});
}

TEST_F(Demo, NamesThePartInWhichTheStoreFails) {
    factory.uplinks.afterSave = [](auto& /*stored*/) { throw std::runtime_error("disk full"); };
    try {
        run();
        FAIL() << "did not fail";
    } catch (const host::Failure& failure) {
        EXPECT_STREQ(failure.what(), "the part on uplink messages failed: disk full");
    }
}

} // namespace
