#include "redis/device_client_database_redis.h"

#include "tests/redis/scripted_replies.h"
#include "tests/support/eventually.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/redis_server.h"
#include "tests/support/redis_wire.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <type_traits>

namespace {

using redis::DeviceClientDatabaseRedis;
using RedisClient::Connection;
using test_support::ScriptedReplies;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;
using namespace test_support::literals;

using device_info = std::pair<QString, QString>;

static_assert(std::has_virtual_destructor_v<DeviceClientDatabaseRedis>);
static_assert(std::has_virtual_destructor_v<redis::DeviceClientRepositoryRedis>);

redis_conf confOf(int port) {
    redis_conf conf = redis_conf_from_json({});
    conf.port = port;
    return conf;
}

std::string failureOfConstruction(const redis_conf& conf) {
    try {
        const DeviceClientDatabaseRedis clients{conf};
    } catch (const Connection::Exception& exception) {
        return exception.what();
    }
    ADD_FAILURE() << "it was constructed";
    return {};
}

class DeviceClientServer : public testing::Test {
protected:
    test_support::RedisServer server;
    test_support::RedisProxy proxy{server.port()};
};

class DeviceClients : public DeviceClientServer {
protected:
    DeviceClients() { proxy.forget(); }

    void addClients(const QByteArray& key, const QList<QByteArray>& names, int db = 2) {
        server.run(QList<QByteArray>{"SADD", key} + names, db);
    }

    DeviceClientDatabaseRedis clients{confOf(proxy.port())};
    interfaces::IDeviceClientsRepository& repository = *clients.DeviceClientsRepository();
};

// Deliberate: the empty argument belongs to the command.
TEST_F(DeviceClientServer, IsAskedForItsSizeWithAnEmptyArgumentInTheClientDatabase) {
    DeviceClientDatabaseRedis clients{confOf(proxy.port())};

    EXPECT_EQ(proxy.connections(), 1);
    EXPECT_THAT(proxy.sent(),
                ElementsAre(QList<QByteArray>{"PING"}, QList<QByteArray>{"SELECT", "2"},
                            QList<QByteArray>{"DBSIZE", ""}));
}

TEST_F(DeviceClientServer, RefusesThatCommandAndNobodyMinds) {
    DeviceClientDatabaseRedis clients{confOf(server.port())};

    const QByteArray statistics = server.run({"INFO", "commandstats"}).toByteArray();
    const int line = statistics.indexOf("cmdstat_dbsize:");
    ASSERT_GE(line, 0);
    EXPECT_THAT(statistics.mid(line).split('\n').first().toStdString(),
                testing::AllOf(HasSubstr("calls=0,"), HasSubstr("rejected_calls=1,")));
}

TEST_F(DeviceClientServer, IsLeftWithTheEndOfTheObject) {
    redis_conf conf = confOf(server.port());
    conf.name = "kelvro-h"_q;
    {
        DeviceClientDatabaseRedis clients{conf};
        EXPECT_EQ(server.clientField("kelvro-h", "db"), "2");
    }

    EXPECT_TRUE(test_support::eventually(
        [this] { return server.clientField("kelvro-h", "db").isEmpty(); }));
}

TEST_F(DeviceClients, GivesItsRepositoryAlwaysTheSame) {
    EXPECT_NE(clients.DeviceClientsRepository(), nullptr);
    EXPECT_EQ(clients.DeviceClientsRepository(), clients.DeviceClientsRepository());
}

TEST_F(DeviceClients, TransactionsAndCreationDoNothing) {
    addClients("dev:clients:17", {"north"});
    clients.CreateDatabase();
    clients.BeginTransaction();
    clients.CommitTransaction();
    clients.RollbackTransaction();

    EXPECT_THAT(proxy.sent(), IsEmpty());
    EXPECT_EQ(server.run({"DBSIZE"}, 2), QVariant(1));
}

TEST_F(DeviceClients, OfADeviceAreTheMembersOfItsSet) {
    addClients("dev:clients:17", {"north", "south", "east"});
    addClients("dev:clients:18", {"west"});

    EXPECT_THAT(repository.GetDeviceClients(17),
                UnorderedElementsAre("north"_q, "south"_q, "east"_q));
    EXPECT_THAT(proxy.sent(), ElementsAre(QList<QByteArray>{"SMEMBERS", "dev:clients:17"}));
}

TEST_F(DeviceClients, ComeInTheServersOrder) {
    for (int i = 0; i < 1000; ++i) {
        addClients("dev:clients:17", {"client-" + QByteArray::number(i)});
    }
    std::vector<QString> inOrder;
    for (const QVariant& name : server.run({"SMEMBERS", "dev:clients:17"}, 2).toList()) {
        inOrder.push_back(name.toString());
    }

    EXPECT_THAT(inOrder, testing::SizeIs(1000));
    EXPECT_THAT(repository.GetDeviceClients(17), ElementsAreArray(inOrder));
}

TEST_F(DeviceClients, OfADeviceWithoutASetAreNone) {
    addClients("dev:clients:170", {"north"});

    EXPECT_THAT(repository.GetDeviceClients(17), IsEmpty());
}

TEST_F(DeviceClients, InAKeyOfAnotherTypeAreNone) {
    server.run({"SET", "dev:clients:17", "north"}, 2);
    server.run({"HSET", "dev:clients:18", "north", "1"}, 2);

    EXPECT_THAT(repository.GetDeviceClients(17), IsEmpty());
    EXPECT_THAT(repository.GetDeviceClients(18), IsEmpty());
}

TEST_F(DeviceClients, InOtherDatabasesAreNotFound) {
    addClients("dev:clients:17", {"north"}, 0);
    addClients("dev:clients:17", {"south"}, 7);

    EXPECT_THAT(repository.GetDeviceClients(17), IsEmpty());
}

TEST_F(DeviceClients, AreAskedForEachTime) {
    addClients("dev:clients:17", {"north"});
    repository.GetDeviceClients(17);
    server.run({"DEL", "dev:clients:17"}, 2);

    EXPECT_THAT(repository.GetDeviceClients(17), IsEmpty());
}

TEST_F(DeviceClients, HaveNamesInUtf8) {
    addClients("dev:clients:17", {"\u0421\u0435\u0432\u0435\u0440 \U0001F50C"});

    EXPECT_THAT(repository.GetDeviceClients(17),
                ElementsAre("\u0421\u0435\u0432\u0435\u0440 \U0001F50C"_q));
}

TEST_F(DeviceClients, HaveOddNamesToo) {
    addClients("dev:clients:17", {""});
    addClients("dev:clients:18", {"a\xff"});
    addClients("dev:clients:19", {"a:b c\n"});

    EXPECT_THAT(repository.GetDeviceClients(17), ElementsAre(QString()));
    EXPECT_THAT(repository.GetDeviceClients(18), ElementsAre("a\ufffd"_q));
    EXPECT_THAT(repository.GetDeviceClients(19), ElementsAre("a:b c\n"_q));
}

class DeviceNumber : public DeviceClients, public testing::WithParamInterface<int> {};

TEST_P(DeviceNumber, StandsInTheKeysInDecimal) {
    const QByteArray number = QByteArray::number(GetParam());
    addClients("dev:clients:" + number, {"of " + number});
    server.run({"HSET", "dev:properties:" + number, "protocol", "p " + number}, 2);

    EXPECT_THAT(repository.GetDeviceClients(GetParam()),
                ElementsAre("of "_q + QString::number(GetParam())));
    EXPECT_EQ(repository.GetDeviceInfo(GetParam()),
              device_info("p "_q + QString::number(GetParam()), QString()));
}

INSTANTIATE_TEST_SUITE_P(Of, DeviceNumber, testing::Values(0, 17, -5, 2147483647, -2147483647 - 1));

TEST_F(DeviceClients, InfoIsTheProtocolAndThenTheHardwareType) {
    server.run({"HSET", "dev:properties:17", "hw_type", "meter-3", "protocol", "wm-bus", "x", "y"},
               2);

    EXPECT_EQ(repository.GetDeviceInfo(17), device_info("wm-bus"_q, "meter-3"_q));
}

TEST_F(DeviceClients, InfoIsAskedForTheHardwareTypeFirst) {
    repository.GetDeviceInfo(17);

    EXPECT_THAT(proxy.sent(),
                ElementsAre(QList<QByteArray>{"HGET", "dev:properties:17", "hw_type"},
                            QList<QByteArray>{"HGET", "dev:properties:17", "protocol"}));
}

TEST_F(DeviceClients, InfoWithoutAProtocolHasItEmpty) {
    server.run({"HSET", "dev:properties:17", "hw_type", "meter-3"}, 2);

    EXPECT_EQ(repository.GetDeviceInfo(17), device_info(QString(), "meter-3"_q));
}

TEST_F(DeviceClients, InfoWithoutAHardwareTypeHasItEmpty) {
    server.run({"HSET", "dev:properties:17", "protocol", "wm-bus"}, 2);

    EXPECT_EQ(repository.GetDeviceInfo(17), device_info("wm-bus"_q, QString()));
}

TEST_F(DeviceClients, InfoOfADeviceWithoutPropertiesIsEmpty) {
    EXPECT_EQ(repository.GetDeviceInfo(17), device_info());
}

TEST_F(DeviceClients, InfoOfAKeyOfAnotherTypeIsEmpty) {
    server.run({"SET", "dev:properties:17", "wm-bus"}, 2);

    EXPECT_EQ(repository.GetDeviceInfo(17), device_info());
}

TEST_F(DeviceClients, InfoIsTextInUtf8) {
    server.run({"HSET", "dev:properties:17", "hw_type",
                "\u0441\u0447\u0451\u0442\u0447\u0438\u043a", "protocol", "42"},
               2);

    EXPECT_EQ(repository.GetDeviceInfo(17),
              device_info("42"_q, "\u0441\u0447\u0451\u0442\u0447\u0438\u043a"_q));
}

TEST_F(DeviceClients, InfoFieldsAreSpelledExactly) {
    server.run({"HSET", "dev:properties:17", "HW_TYPE", "a", "Protocol", "b"}, 2);

    EXPECT_EQ(repository.GetDeviceInfo(17), device_info());
}

TEST_F(DeviceClients, ReadingWritesNothing) {
    addClients("dev:clients:17", {"north"});
    const auto changes = [this] {
        const QByteArray info = server.run({"INFO", "persistence"}).toByteArray();
        const int line = info.indexOf("rdb_changes_since_last_save:");
        return info.mid(line).split('\r').first();
    };
    const QByteArray before = changes();
    repository.GetDeviceClients(17);
    repository.GetDeviceClients(18);
    repository.GetDeviceInfo(17);

    EXPECT_EQ(before, "rdb_changes_since_last_save:1");
    EXPECT_EQ(changes(), before);
}

TEST_F(DeviceClients, AreFoundAgainAfterTheServerCameBack) {
    DeviceClientDatabaseRedis direct{confOf(server.port())};
    server.stop();
    EXPECT_THROW(direct.DeviceClientsRepository()->GetDeviceClients(17), Connection::Exception);
    server.start();
    addClients("dev:clients:17", {"north"});

    EXPECT_THAT(direct.DeviceClientsRepository()->GetDeviceClients(17), ElementsAre("north"_q));
}

TEST_F(DeviceClients, ComeFromTheDatabaseOfTheSettings) {
    addClients("dev:clients:17", {"north"}, 5);
    addClients("dev:clients:17", {"south"}, 2);
    redis_conf conf = redis_conf_from_json({{"cleint_db"_q, 5}, {"port"_q, server.port()}});

    EXPECT_THAT(DeviceClientDatabaseRedis{conf}.DeviceClientsRepository()->GetDeviceClients(17),
                ElementsAre("north"_q));
}

// Deliberate: only "cleint_db" is understood.
TEST_F(DeviceClients, ComeFromDatabaseTwoWhenTheSettingIsSpelledTheUsualWay) {
    addClients("dev:clients:17", {"north"}, 5);
    addClients("dev:clients:17", {"south"}, 2);
    redis_conf conf = redis_conf_from_json({{"client_db"_q, 5}, {"port"_q, server.port()}});

    EXPECT_THAT(DeviceClientDatabaseRedis{conf}.DeviceClientsRepository()->GetDeviceClients(17),
                ElementsAre("south"_q));
}

TEST_F(DeviceClients, ComeWithThePassword) {
    addClients("dev:clients:17", {"north"});
    server.setPassword("secret");
    redis_conf conf = confOf(server.port());
    conf.auth = "secret"_q;

    EXPECT_THAT(DeviceClientDatabaseRedis{conf}.DeviceClientsRepository()->GetDeviceClients(17),
                ElementsAre("north"_q));
}

TEST_F(DeviceClients, WrongOrMissingPasswordIsRefusedByTheConstructor) {
    server.setPassword("secret");
    redis_conf conf = confOf(server.port());
    EXPECT_THROW(DeviceClientDatabaseRedis{conf}, Connection::Exception);

    conf.auth = "guess"_q;
    EXPECT_THROW(DeviceClientDatabaseRedis{conf}, Connection::Exception);
}

// The connecting itself is not looked at; the command after it fails.
TEST_F(DeviceClients, UnreachableServerIsReportedByTheConstructorsCommand) {
    const int port = test_support::TestSocket::unusedPort();
    const std::string text = failureOfConstruction(confOf(port));

    EXPECT_THAT(text, HasSubstr("127.0.0.1:" + std::to_string(port)));
    EXPECT_THAT(text, HasSubstr("DBSIZE"));
}

TEST_F(DeviceClients, DatabaseThatTheServerDoesNotHaveIsNamedByTheConstructor) {
    redis_conf conf = confOf(server.port());
    conf.client_db = 99;

    EXPECT_THAT(failureOfConstruction(conf),
                HasSubstr("DBSIZE: database 99 cannot be selected: ERR DB index is out of range"));
}

TEST_F(DeviceClients, ServerThatReadsItsDataBackIsNotThere) {
    server.run(
        {"EVAL", "for i = 1, 500 do redis.call('SET', 'o' .. i, string.rep('x', 200)) end", "0"});
    addClients("dev:clients:17", {"north"});
    server.run({"SAVE"});
    server.kill();
    server.startLoading(std::chrono::milliseconds(2));

    EXPECT_THAT(failureOfConstruction(confOf(server.port())), HasSubstr("LOADING"));
    EXPECT_THROW(repository.GetDeviceClients(17), Connection::Exception);
    EXPECT_THROW(repository.GetDeviceInfo(17), Connection::Exception);
}

TEST_F(DeviceClients, HostIsTakenFromTheSettings) {
    test_support::RedisServer elsewhere({}, "127.0.0.2"_q);
    elsewhere.run({"SADD", "dev:clients:17", "north"}, 2);
    redis_conf conf = confOf(elsewhere.port());
    conf.host = "127.0.0.2"_q;

    EXPECT_THAT(DeviceClientDatabaseRedis{conf}.DeviceClientsRepository()->GetDeviceClients(17),
                ElementsAre("north"_q));
}

// Connecting takes the whole five seconds then.
TEST(UnreachableDeviceClients, AreTriedForOnceByTheConstructor) {
    const test_support::FakePeer mute(
        [](test_support::TestSocket& client, int) { client.waitForClosing(); });

    EXPECT_THAT(failureOfConstruction(confOf(mute.port())),
                HasSubstr("DBSIZE: not connected: PING: timed out"));
    EXPECT_EQ(mute.connections(), 1);
}

TEST_F(DeviceClients, AreNoneWhenTheServerRefuses) {
    addClients("dev:clients:17", {"north"});
    server.run({"HSET", "dev:properties:17", "protocol", "wm-bus"}, 2);
    server.run({"ACL", "SETUSER", "default", "-smembers", "-hget"});

    EXPECT_THAT(repository.GetDeviceClients(17), IsEmpty());
    EXPECT_EQ(repository.GetDeviceInfo(17), device_info());
}

// The first reply is for DBSIZE.
TEST(ScriptedDeviceClients, AreTextsOfWhateverTheReplyHolds) {
    ScriptedReplies peer{{":0\r\n", ScriptedReplies::array({"$1\r\na\r\n", "$-1\r\n", ":5\r\n"})}};
    DeviceClientDatabaseRedis clients{confOf(peer.port())};

    EXPECT_THAT(clients.DeviceClientsRepository()->GetDeviceClients(17),
                ElementsAre("a"_q, QString(), "5"_q));
}

TEST(ScriptedDeviceClients, KeepTheirDuplicatesAndTheirOrder) {
    ScriptedReplies peer{{":0\r\n", ScriptedReplies::bulks({"b", "a", "b"})}};
    DeviceClientDatabaseRedis clients{confOf(peer.port())};

    EXPECT_THAT(clients.DeviceClientsRepository()->GetDeviceClients(17),
                ElementsAre("b"_q, "a"_q, "b"_q));
}

TEST(ScriptedDeviceClients, InfoIsTheTextOfWhateverTheRepliesHold) {
    ScriptedReplies peer{{":0\r\n", ":5\r\n", ScriptedReplies::bulks({"wm-bus"})}};
    DeviceClientDatabaseRedis clients{confOf(peer.port())};

    EXPECT_EQ(clients.DeviceClientsRepository()->GetDeviceInfo(17), device_info(QString(), "5"_q));
}

} // namespace
