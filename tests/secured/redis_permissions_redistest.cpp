#include "interfaces/idevice_clients_database.h"
#include "interfaces/idevice_clients_repository.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_state.h"
#include "tests/contract/loaded_plugin.h"
#include "tests/secured/failed_attempt.h"
#include "tests/secured/redis_settings.h"
#include "tests/support/mongo_database.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/redis_server.h"

#include <gmock/gmock.h>

#include <set>
#include <string>

// The rights that the Redis user of the settings, which is always "default", has to have.

namespace {

using namespace test_support;
using namespace test_support::literals;
using RedisClient::Connection;
using RedisClient::ConnectionConfig;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// All that the plug-in asks for. AUTH is always allowed, and DBSIZE, sent with an argument too
/// many, is refused before anybody's rights are looked at.
const QList<QByteArray> neededCommands{"+ping", "+select", "+client|setname", "+get",      "+set",
                                       "+del",  "+scan",   "+mget",           "+smembers", "+hget"};
/// With the prefix "drv:a".
const QList<QByteArray> neededKeys{"~drv:a:*", "~[0-9]*", "%R~dev:clients:*",
                                   "%R~dev:properties:*"};

constexpr int device = 17;

/// A server whose default user has a password and the rights that a test gives it. The keys of a
/// device in the registry are there.
class RedisPermissions : public FixedMongoDatabase {
protected:
    RedisPermissions() {
        admin.commandSync({"SADD", "dev:clients:17", "utility"}, 2);
        admin.commandSync({"HSET", "dev:properties:17", "hw_type", "w", "protocol", "p"}, 2);
        admin.commandSync({"ACL", "SETUSER", "admin", "on", ">a", "~*", "&*", "+@all"}, 0);
        admin.commandSync({"AUTH", "admin", "a"}, 0);
    }

    void allow(const QList<QByteArray>& commands, const QList<QByteArray>& keys = neededKeys) {
        const auto answer =
            admin.commandSync(QList<QByteArray>{"ACL", "SETUSER", "default", "resetpass", ">secret",
                                                "resetkeys", "resetchannels", "nocommands"} +
                                  keys + commands,
                              0);
        ASSERT_FALSE(answer.isErrorMessage()) << answer.errorMessage().toStdString();
    }

    QJsonObject settings() const {
        auto settings = redisSettings(server.port(), "secret"_q, mongoUrl());
        auto redis = settings.value("redis"_q).toObject();
        redis.insert("name"_q, "driver"_q);
        settings.insert("redis"_q, redis);
        return settings;
    }

    std::shared_ptr<interfaces::IDriverState> createState() {
        auto state = plugin.factory()->CreateDriverStateInst(settings(), nullptr);
        state->SetPrefix("drv:a"_q);
        return state;
    }

    /// What was refused, as the server's own log of such things has it.
    std::set<std::string> refused() {
        std::set<std::string> objects;
        const auto entries = admin.commandSync({"ACL", "LOG"}, 0).getValue().toList();
        for (const auto& entry : entries) {
            const auto fields = entry.toList();
            for (int i = 0; i + 1 < fields.size(); i += 2) {
                if (fields[i].toByteArray() == "object") {
                    objects.insert(fields[i + 1].toByteArray().toStdString());
                }
            }
        }
        return objects;
    }

    /// One of each operation that goes to Redis.
    void doEverything() {
        const auto state = createState();
        state->SetValue(device, "n"_q, 5);
        state->Push(device, false);
        state->Pull(device);
        state->GetAllStates("a"_q, "drv"_q);
        state->Delete(device);
        state->DLqueue()->Push(device, {}, false);
        state->DLqueue()->Pull(device);
        state->DLqueue()->Delete(device);
        const auto clients = plugin.factory()->CreateClientDatabaseInst(settings(), nullptr);
        clients->DeviceClientsRepository()->GetDeviceClients(device);
        clients->DeviceClientsRepository()->GetDeviceInfo(device);
    }

    RedisServer server;
    Connection admin{ConnectionConfig("127.0.0.1"_q, QString(), server.port())};
    LoadedPlugin plugin;
};

TEST_F(RedisPermissions, SufficeForEveryOperation) {
    allow(neededCommands);
    const auto state = createState();
    state->SetValue(device, "n"_q, 5);
    state->Push(device, false);
    EXPECT_EQ(admin.commandSync({"GET", "drv:a:17"}, 0).getValue(), QVariant(R"({"n":5})"_qba));
    state->Pull(device);
    EXPECT_EQ(state->GetAll(device), (QJsonObject{{"n"_q, 5}}));
    EXPECT_EQ(state->GetIDs("a"_q, "drv"_q), QList<QVariant>{device});
    EXPECT_EQ(state->GetAllStates("a"_q, "drv"_q)->value(device), (QJsonObject{{"n"_q, 5}}));
    state->Delete(device);
    EXPECT_EQ(admin.commandSync({"EXISTS", "drv:a:17"}, 0).getValue(), QVariant(0LL));

    model::dl_queues queues;
    queues.lock = true;
    state->DLqueue()->Push(device, queues, false);
    EXPECT_TRUE(state->DLqueue()->Pull(device).lock);
    state->DLqueue()->Delete(device);
    EXPECT_FALSE(state->DLqueue()->Pull(device).lock);

    const auto clients = plugin.factory()->CreateClientDatabaseInst(settings(), nullptr);
    auto* const registry = clients->DeviceClientsRepository();
    EXPECT_THAT(registry->GetDeviceClients(device), ElementsAre("utility"_q));
    EXPECT_EQ(registry->GetDeviceInfo(device), std::make_pair("p"_q, "w"_q));
    EXPECT_THAT(admin.commandSync({"CLIENT", "LIST"}, 0).getValue().toByteArray().toStdString(),
                HasSubstr("name=driver "));
    EXPECT_THAT(refused(), IsEmpty());
}

TEST_F(RedisPermissions, AreMissedOneByOne) {
    for (const auto& command : neededCommands) {
        auto others = neededCommands;
        others.removeOne(command);
        allow(others);
        attempt([&] { doEverything(); });
        EXPECT_THAT(refused(), Contains(command.mid(1).toStdString()));
        admin.commandSync({"ACL", "LOG", "RESET"}, 0);
    }
}

TEST_F(RedisPermissions, AreMissedKeyByKey) {
    for (const auto& keys : neededKeys) {
        auto others = neededKeys;
        others.removeOne(keys);
        allow(neededCommands, others);
        doEverything();
        EXPECT_FALSE(refused().empty()) << keys.toStdString();
        admin.commandSync({"ACL", "LOG", "RESET"}, 0);
    }
}

// Deliberate: a refused command is an answer like others, which nobody looks at.
TEST_F(RedisPermissions, AreNotMissedLoudlyByAPush) {
    allow({"+@all", "-set"});
    const auto state = createState();
    state->SetValue(device, "n"_q, 5);

    EXPECT_TRUE(state->Push(device, false));

    EXPECT_EQ(admin.commandSync({"EXISTS", "drv:a:17"}, 0).getValue(), QVariant(0LL));
}

TEST_F(RedisPermissions, AreMissedLoudlyByTheChoiceOfADatabase) {
    allow({"+@all", "-select"});
    const auto state = createState();

    const auto failed = attempt([&] { state->DLqueue()->Pull(device); });

    EXPECT_EQ(failed.type, "RedisClient::Connection::Exception");
    EXPECT_THAT(failed.text, HasSubstr("GET: database 7 cannot be selected: NOPERM User default "
                                       "has no permissions to run the 'select' command"));
}

} // namespace
