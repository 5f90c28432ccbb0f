#include "interfaces/idevice_clients_database.h"
#include "interfaces/idevice_clients_repository.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_state.h"
#include "tests/contract/loaded_plugin.h"
#include "tests/contract/redis_commands.h"
#include "tests/contract/virtual_table.h"
#include "tests/support/log_capture.h"
#include "tests/support/mongo_database.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <mongocxx/v1/exception.hpp>

#include <gmock/gmock.h>

#include <random>

using namespace interfaces;
using namespace test_support;
using namespace test_support::literals;
using testing::ElementsAre;
using testing::IsEmpty;
using virtual_table::slot;

namespace {

/// A number that no other test takes for a device.
int uniqueDevice() {
    std::random_device random;
    return static_cast<int>(1'000'000'000 + random() % 1'000'000'000);
}

/// Needs both servers, as the object does.
class PluginDriverState : public FixedMongoDatabase {
protected:
    ~PluginDriverState() override {
        redis.select(0);
        redis.run({"DEL", "kelvro-test:" + number});
        redis.select(7);
        redis.run({"DEL", number});
    }

    QJsonObject settings() {
        QJsonObject settings = settingsFor(mongoUrl());
        settings.insert("redis"_q, redis.settings());
        return settings;
    }

    std::shared_ptr<IDriverState> create() {
        auto state = plugin.factory()->CreateDriverStateInst(settings(), nullptr);
        state->SetPrefix("kelvro-test"_q);
        return state;
    }

    int device = uniqueDevice();
    std::string number = std::to_string(device);
    redis_commands redis;
    log_capture log;
    LoadedPlugin plugin;
};

TEST_F(PluginDriverState, LaysItsDurableStoresOutBeforeTheHostHasTheObject) {
    const auto state = create();

    EXPECT_THAT(database.collections(), ElementsAre("dl_queues", "states"));
}

TEST_F(PluginDriverState, ServesValuesThroughItsSlots) {
    using value = std::variant<int, double, QByteArray>;
    const auto state = create();
    slot<void(const QString&)>::call(state.get(), 1, "kelvro-test"_q);
    EXPECT_EQ(slot<const QString&()>::call(state.get(), 2), "kelvro-test"_q);
    slot<void(int, const QString&, const value&)>::call(state.get(), 7, device, "n"_q, value{2.5});
    EXPECT_EQ((slot<value(int, const QString&)>::call(state.get(), 6, device, "n"_q)), value{2.5});
    EXPECT_EQ(slot<QJsonObject(int)>::call(state.get(), 10, device), (QJsonObject{{"n"_q, 2.5}}));

    EXPECT_TRUE((slot<bool(int, bool)>::call(state.get(), 4, device, true)));
    redis.select(0);
    EXPECT_EQ(redis.run({"GET", "kelvro-test:" + number}), R"({"n":2.5})");
    EXPECT_EQ(database.count("states", R"({"_id": )" + number + R"(, "state.n": 2.5})"), 1);
    EXPECT_TRUE(slot<bool(int)>::call(state.get(), 5, device));
    EXPECT_EQ(redis.run({"EXISTS", "kelvro-test:" + number}), "0");
    EXPECT_EQ(database.count("states"), 0);
}

TEST_F(PluginDriverState, ServesQueuesThroughSlotFourteen) {
    const auto state = create();
    auto* queues = slot<IDriverDLqueue*()>::call(state.get(), 14);
    ASSERT_EQ(queues, state->DLqueue());
    model::dl_queues pushed;
    pushed.lock = true;
    EXPECT_TRUE(
        (slot<bool(int, const model::dl_queues&, bool)>::call(queues, 2, device, pushed, true)));

    redis.select(7);
    EXPECT_EQ(redis.run({"EXISTS", number}), "1");
    EXPECT_EQ(database.count("dl_queues", R"({"_id": )" + number + "}"), 1);
    EXPECT_TRUE((slot<model::dl_queues(int)>::call(queues, 1, device)).lock);
    EXPECT_TRUE(slot<bool(int)>::call(queues, 3, device));
    EXPECT_EQ(redis.run({"EXISTS", number}), "0");
    EXPECT_EQ(database.count("dl_queues"), 0);
}

TEST_F(PluginDriverState, IsRefusedByTheDriverWithoutAUrl) {
    EXPECT_THROW(plugin.factory()->CreateDriverStateInst(QJsonObject{{"redis"_q, redis.settings()}},
                                                         nullptr),
                 mongocxx::v1::exception);
    EXPECT_THAT(database.collections(), IsEmpty());
}

/// Needs Redis alone.
class PluginClients : public testing::Test {
protected:
    ~PluginClients() override {
        for (const int db : {2, 5}) {
            redis.select(db);
            redis.run({"DEL", "dev:clients:" + number, "dev:properties:" + number});
        }
    }

    std::shared_ptr<IDeviceClientsDatabase> create(const QJsonObject& more = {}) {
        QJsonObject settings = redis.settings();
        for (auto member = more.begin(); member != more.end(); ++member) {
            settings.insert(member.key(), member.value());
        }
        return plugin.factory()->CreateClientDatabaseInst(QJsonObject{{"redis"_q, settings}},
                                                          nullptr);
    }

    void fill(int db) {
        redis.select(db);
        redis.run({"SADD", "dev:clients:" + number, "client of " + std::to_string(db)});
        redis.run({"HSET", "dev:properties:" + number, "protocol", "wm-bus", "hw_type", "meter-3"});
    }

    int device = uniqueDevice();
    std::string number = std::to_string(device);
    redis_commands redis;
    log_capture log;
    LoadedPlugin plugin;
};

TEST_F(PluginClients, ComeFromDatabaseTwo) {
    fill(2);
    const auto clients = create();

    EXPECT_THAT(clients->DeviceClientsRepository()->GetDeviceClients(device),
                ElementsAre("client of 2"_q));
}

// Deliberate: hosts' settings spell the key so.
TEST_F(PluginClients, ComeFromTheDatabaseThatTheSettingsNameUnderCleintDb) {
    fill(2);
    fill(5);

    EXPECT_THAT(create({{"cleint_db"_q, 5}})->DeviceClientsRepository()->GetDeviceClients(device),
                ElementsAre("client of 5"_q));
    EXPECT_THAT(create({{"client_db"_q, 5}})->DeviceClientsRepository()->GetDeviceClients(device),
                ElementsAre("client of 2"_q));
}

TEST_F(PluginClients, AreServedThroughTheSlots) {
    fill(2);
    QObject parent;
    const QJsonObject settings{{"redis"_q, redis.settings()}};
    const auto clients =
        slot<std::shared_ptr<IDeviceClientsDatabase>(const QJsonObject&, QObject*)>::call(
            plugin.factory(), 4, settings, &parent);
    EXPECT_EQ(clients.use_count(), 1);
    EXPECT_THAT(parent.children(), IsEmpty());
    for (const std::size_t doesNothing : {1, 2, 3, 4}) {
        slot<void()>::call(clients.get(), doesNothing);
    }
    auto* repository = slot<IDeviceClientsRepository*()>::call(clients.get(), 5);
    ASSERT_EQ(repository, clients->DeviceClientsRepository());

    EXPECT_THAT((slot<std::list<QString>(int)>::call(repository, 1, device)),
                ElementsAre("client of 2"_q));
    EXPECT_EQ((slot<std::pair<QString, QString>(int)>::call(repository, 2, device)),
              std::make_pair("wm-bus"_q, "meter-3"_q));
}

} // namespace
