#include "interfaces/idevice_clients_database.h"
#include "interfaces/idevice_clients_repository.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_state.h"
#include "tests/contract/loaded_plugin.h"
#include "tests/support/mongo_database.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/redis_server.h"
#include "tests/support/system_calls.h"

#include <gmock/gmock.h>

#include <exception>
#include <functional>
#include <string>

// The settings of a Redis server, handed to the loaded plug-in.
namespace {

using namespace test_support::literals;
using test_support::mongoUrl;
using testing::ElementsAre;
using testing::HasSubstr;

class PluginRedisSettings : public test_support::FixedMongoDatabase {
protected:
    std::shared_ptr<interfaces::IDriverState> state(const QJsonObject& redis) {
        QJsonObject settings = settingsFor(mongoUrl());
        settings.insert("redis"_q, redis);
        return plugin.factory()->CreateDriverStateInst(settings, nullptr);
    }

    std::shared_ptr<interfaces::IDeviceClientsDatabase> clients(const QJsonObject& redis) {
        return plugin.factory()->CreateClientDatabaseInst({{"redis"_q, redis}}, nullptr);
    }

    QJsonObject with(const QJsonObject& more) const {
        QJsonObject redis{{"port"_q, server.port()}};
        for (auto member = more.begin(); member != more.end(); ++member) {
            redis.insert(member.key(), member.value());
        }
        return redis;
    }

    test_support::RedisServer server;
    LoadedPlugin plugin;
};

// Exceptions of the client inside the plug-in are known to a host by what they say.
std::string failureOf(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const std::exception& failure) {
        return failure.what();
    }
    return {};
}

TEST_F(PluginRedisSettings, DefaultDatabasesAreTwoSevenAndZero) {
    server.run({"SADD", "dev:clients:17", "north"}, 2);
    const auto state = this->state(with({}));
    state->SetPrefix("drv"_q);
    state->Push(17, false);
    state->DLqueue()->Push(17, {}, false);

    EXPECT_THAT(clients(with({}))->DeviceClientsRepository()->GetDeviceClients(17),
                ElementsAre("north"_q));
    EXPECT_EQ(server.run({"KEYS", "*"}, 0), QVariant(QVariantList{"drv:17"_qba}));
    EXPECT_EQ(server.run({"KEYS", "*"}, 7), QVariant(QVariantList{"17"_qba}));
}

TEST_F(PluginRedisSettings, OtherDatabasesAreTaken) {
    server.run({"SADD", "dev:clients:17", "north"}, 11);
    const QJsonObject redis = with({{"state_db"_q, 12}, {"queue_db"_q, 13}, {"cleint_db"_q, 11}});
    const auto state = this->state(redis);
    state->SetPrefix("drv"_q);
    state->Push(17, false);
    state->DLqueue()->Push(17, {}, false);

    EXPECT_THAT(clients(redis)->DeviceClientsRepository()->GetDeviceClients(17),
                ElementsAre("north"_q));
    EXPECT_EQ(server.run({"KEYS", "*"}, 12), QVariant(QVariantList{"drv:17"_qba}));
    EXPECT_EQ(server.run({"KEYS", "*"}, 13), QVariant(QVariantList{"17"_qba}));
}

TEST_F(PluginRedisSettings, PasswordAndNameAreGiven) {
    server.setPassword("secret");
    const QJsonObject redis = with({{"auth"_q, "secret"_q}, {"name"_q, "kelvro-h"_q}});
    const auto clients = this->clients(redis);

    EXPECT_EQ(server.clientField("kelvro-h", "db"), "2");
    state(redis)->Push(17, false);
    EXPECT_EQ(server.run({"EXISTS", ":17"}), QVariant(1));
}

TEST_F(PluginRedisSettings, WrongPasswordReachesTheHostAsAnException) {
    server.setPassword("secret");
    const QJsonObject redis = with({{"auth"_q, "guess"_q}});

    EXPECT_THAT(failureOf([&] { clients(redis); }), HasSubstr("WRONGPASS"));
    EXPECT_THAT(failureOf([&] { state(redis)->Pull(17); }), HasSubstr("WRONGPASS"));
}

TEST_F(PluginRedisSettings, DatabaseThatTheServerDoesNotHaveReachesTheHostAsAnException) {
    const QJsonObject redis = with({{"cleint_db"_q, 97}, {"state_db"_q, 98}, {"queue_db"_q, 99}});
    const auto state = this->state(redis);

    EXPECT_THAT(failureOf([&] { clients(redis); }), HasSubstr("database 97 cannot be selected"));
    EXPECT_THAT(failureOf([&] { state->Pull(17); }), HasSubstr("database 98 cannot be selected"));
    EXPECT_THAT(failureOf([&] { state->DLqueue()->Pull(17); }),
                HasSubstr("database 99 cannot be selected"));
}

TEST_F(PluginRedisSettings, MistypedHostAndDatabaseAreTheDefaults) {
    const auto clients =
        this->clients(with({{"cleint_db"_q, "11"_q}, {"name"_q, "kelvro-h"_q}, {"host"_q, 127}}));

    EXPECT_EQ(server.clientField("kelvro-h", "db"), "2");
}

TEST_F(PluginRedisSettings, ValuesGoThroughBothServersAndBack) {
    const auto writer = state(with({}));
    writer->SetPrefix("drv"_q);
    writer->SetValue(17, "n"_q, 5);
    writer->Push(17, true);
    server.run({"DEL", "drv:17"});
    const auto reader = state(with({}));
    reader->SetPrefix("drv"_q);
    reader->Pull(17);

    EXPECT_EQ(reader->GetValue(17, "n"_q), (std::variant<int, double, QByteArray>{5.0}));
    EXPECT_EQ(database.count("states", R"({"_id": 17, "state.n": 5})"), 1);
}

// Whoever asks for the usual port is led to the test's server.
class PluginWithoutRedisSettings : public testing::Test {
protected:
    PluginWithoutRedisSettings() { server.run({"SADD", "dev:clients:17", "north"}, 2); }

    void expectClientsOfTheUsualPlace(const QJsonObject& settings) {
        const test_support::RedirectedPort usual(6379, server.port());
        const auto clients = plugin.factory()->CreateClientDatabaseInst(settings, nullptr);

        EXPECT_THAT(usual.asked(), ElementsAre("127.0.0.1"));
        EXPECT_THAT(clients->DeviceClientsRepository()->GetDeviceClients(17),
                    ElementsAre("north"_q));
    }

    test_support::RedisServer server;
    LoadedPlugin plugin;
};

TEST_F(PluginWithoutRedisSettings, AsksTheUsualPlace) {
    expectClientsOfTheUsualPlace({});
}

TEST_F(PluginWithoutRedisSettings, AsksTheUsualPlaceForAnythingButAnObject) {
    expectClientsOfTheUsualPlace({{"redis"_q, "redis://127.0.0.1:1"_q}});
    expectClientsOfTheUsualPlace({{"redis"_q, QJsonValue::Null}});
    expectClientsOfTheUsualPlace({{"redis"_q, 5}});
}

TEST_F(PluginWithoutRedisSettings, AsksTheUsualPlaceForAnEmptyObject) {
    expectClientsOfTheUsualPlace({{"redis"_q, QJsonObject{}}});
}

TEST_F(PluginWithoutRedisSettings, AsksTheUsualPortWhenItIsNoWholeNumber) {
    expectClientsOfTheUsualPlace({{"redis"_q, QJsonObject{{"port"_q, "1"_q}}}});
    expectClientsOfTheUsualPlace({{"redis"_q, QJsonObject{{"port"_q, 1.5}}}});
}

} // namespace
