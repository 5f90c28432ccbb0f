#include "redis/driver_state.h"

#include "tests/redis/redis_store_fixture.h"
#include "tests/support/eventually.h"

#include <mongocxx/v1/exception.hpp>

#include <functional>
#include <string>
#include <vector>

// Settings that matter, servers that are not there, and servers that refuse.
namespace {

using RedisClient::Connection;
using test_support::canonical;
using test_support::mongoUrl;
using test_support::unreachableMongoUrl;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using namespace test_support::literals;

/// The words of the exception that Redis is not to be had.
std::string failureOf(const std::function<void()>& operation) {
    try {
        operation();
    } catch (const Connection::Exception& exception) {
        return exception.what();
    }
    ADD_FAILURE() << "it was done";
    return {};
}

class DriverStateSettings : public RedisStoreTest {
protected:
    /// The server itself, without the proxy.
    redis_conf direct() const {
        redis_conf conf = redis_conf_from_json({});
        conf.port = server.port();
        return conf;
    }

    bool hasKey(const QByteArray& key, int db) {
        return server.run({"EXISTS", key}, db) == QVariant(1);
    }

    int clientsNamed(const QByteArray& name) {
        return server.run({"CLIENT", "LIST"}).toByteArray().count("name=" + name + ' ');
    }
};

TEST_F(DriverStateSettings, DefaultDatabasesAreZeroForStatesAndSevenForQueues) {
    redis::DriverStateRedis states{direct(), mongoUrl()};
    states.Push(5, false);
    states.DLqueue()->Push(5, {}, false);

    EXPECT_EQ(server.run({"KEYS", "*"}, 0), QVariant(QVariantList{":5"_qba}));
    EXPECT_EQ(server.run({"KEYS", "*"}, 7), QVariant(QVariantList{"5"_qba}));
}

TEST_F(DriverStateSettings, OtherDatabasesAreUsedByEveryCommand) {
    redis_conf conf = direct();
    conf.state_db = 3;
    conf.queue_db = 15;
    redis::DriverStateRedis states{conf, mongoUrl()};
    states.SetPrefix("x:y"_q);
    server.run({"SET", "x:y:8", R"({"a":1})"}, 3);

    states.Push(5, false);
    states.DLqueue()->Push(5, {}, false);
    EXPECT_TRUE(hasKey("x:y:5", 3));
    EXPECT_TRUE(hasKey("5", 15));
    states.Pull(8);
    EXPECT_EQ(states.GetAll(8), (QJsonObject{{"a"_q, 1}}));
    EXPECT_EQ(states.GetIDs("y"_q, "x"_q).size(), 2);
    EXPECT_EQ(states.GetAllStates("y"_q, "x"_q)->value(8), (QJsonObject{{"a"_q, 1}}));

    states.Delete(5);
    EXPECT_TRUE(hasKey("5", 15));
    states.DLqueue()->Delete(5);
    EXPECT_FALSE(hasKey("x:y:5", 3));
    EXPECT_FALSE(hasKey("5", 15));
    EXPECT_EQ(server.run({"DBSIZE"}, 0), QVariant(0));
    EXPECT_EQ(server.run({"DBSIZE"}, 7), QVariant(0));
}

// The same key text, told apart by the database alone.
TEST_F(DriverStateSettings, DeviceFiveOfTheStatesAndOfTheQueuesAreApart) {
    redis::DriverStateRedis states{direct(), mongoUrl()};
    server.run({"SET", "5", "of another"}, 0);
    model::dl_queues queues;
    queues.lock = true;
    states.DLqueue()->Push(5, queues, true);
    states.SetValue(5, "a"_q, 2);
    states.Push(5, true);

    EXPECT_EQ(server.run({"GET", "5"}, 0), QVariant("of another"_qba));
    EXPECT_EQ(server.run({"GET", "5"}, 7),
              QVariant(R"({"dl":{},"lock":true,"status":"NONE"})"_qba));
    EXPECT_THAT(database.documents("states"),
                ElementsAre(canonical(R"({"_id": 5, "state": {"a": 2.0}})")));
    EXPECT_THAT(database.documents("dl_queues"),
                ElementsAre(canonical(
                    R"({"_id": 5, "state": {"dl": {}, "lock": true, "status": "NONE"}})")));
}

TEST_F(DriverStateSettings, OneDatabaseForBothKeepsThemApartByTheColon) {
    redis_conf conf = direct();
    conf.queue_db = conf.state_db;
    redis::DriverStateRedis states{conf, mongoUrl()};
    states.Push(5, false);
    states.DLqueue()->Push(5, {}, false);

    EXPECT_TRUE(hasKey(":5", 0));
    EXPECT_TRUE(hasKey("5", 0));
}

TEST_F(DriverStateSettings, PasswordIsGivenOverBothConnections) {
    server.setPassword("\u0441\u0435\u043a\u0440\u0435\u0442 1");
    redis_conf conf = this->conf();
    conf.auth = "\u0441\u0435\u043a\u0440\u0435\u0442 1"_q;
    redis::DriverStateRedis states{conf, mongoUrl()};
    states.Push(5, false);
    states.DLqueue()->Push(5, {}, false);

    const QList<QByteArray> auth{"AUTH", "\u0441\u0435\u043a\u0440\u0435\u0442 1"};
    EXPECT_EQ(proxy.sentOver(1).front(), auth);
    EXPECT_EQ(proxy.sentOver(2).front(), auth);
    EXPECT_TRUE(hasKey(":5", 0));
    EXPECT_TRUE(hasKey("5", 7));
}

TEST_F(DriverStateSettings, WrongPasswordShowsAtTheFirstCommand) {
    server.setPassword("secret");
    redis_conf conf = direct();
    conf.auth = "guess"_q;
    redis::DriverStateRedis states{conf, mongoUrl()};

    EXPECT_THROW(states.Pull(5), Connection::Exception);
    EXPECT_THROW(states.DLqueue()->Pull(5), Connection::Exception);
}

TEST_F(DriverStateSettings, MissingPasswordShowsAtTheFirstCommand) {
    server.setPassword("secret");
    redis::DriverStateRedis states{direct(), mongoUrl()};

    EXPECT_THROW(states.Push(5, true), Connection::Exception);
    EXPECT_EQ(database.count("states"), 0);
}

TEST_F(DriverStateSettings, HostIsLookedUpByName) {
    redis_conf conf = direct();
    conf.host = "localhost"_q;
    redis::DriverStateRedis states{conf, mongoUrl()};
    states.Push(5, false);

    EXPECT_TRUE(hasKey(":5", 0));
}

TEST_F(DriverStateSettings, HostIsTakenFromTheSettings) {
    test_support::RedisServer elsewhere({}, "127.0.0.2"_q);
    redis_conf conf = redis_conf_from_json({});
    conf.host = "127.0.0.2"_q;
    conf.port = elsewhere.port();
    redis::DriverStateRedis states{conf, mongoUrl()};
    states.Push(5, false);
    states.DLqueue()->Push(5, {}, false);

    EXPECT_EQ(elsewhere.run({"EXISTS", ":5"}), QVariant(1));
    EXPECT_EQ(elsewhere.run({"EXISTS", "5"}, 7), QVariant(1));
}

// No number is checked for its range when it is read.
TEST_F(DriverStateSettings, DatabaseThatTheServerDoesNotHaveIsNamedByEveryCommand) {
    redis_conf conf = direct();
    conf.state_db = 99;
    database.insert("states", R"({"_id": 5, "state": {"a": 1}})");
    redis::DriverStateRedis states{conf, mongoUrl()};
    states.SetValue(5, "a"_q, 2);
    const std::vector<std::function<void()>> commands{
        [&] { states.Push(5, true); },
        [&] { states.Pull(5); },
        [&] { states.Delete(5); },
        [&] { states.DeleteDevices({5}, QDateTime(), QDateTime()); },
        [&] { states.GetIDs("y"_q, "x"_q); },
        [&] { states.GetAllStates("y"_q, "x"_q); },
    };

    for (const auto& command : commands) {
        EXPECT_THAT(failureOf(command),
                    HasSubstr("database 99 cannot be selected: ERR DB index is out of range"));
    }
    EXPECT_EQ(states.GetAll(5), (QJsonObject{{"a"_q, 2}}));
    EXPECT_EQ(database.count("states", R"({"_id": 5, "state.a": 1})"), 1);
    EXPECT_EQ(server.run({"DBSIZE"}, 0), QVariant(0));
    EXPECT_TRUE(states.DLqueue()->Push(5, {}, false));
}

TEST_F(DriverStateSettings, QueueDatabaseThatTheServerDoesNotHaveIsNamedByEveryCommand) {
    redis_conf conf = direct();
    conf.queue_db = 98;
    redis::DriverStateRedis states{conf, mongoUrl()};
    const std::vector<std::function<void()>> commands{
        [&] { states.DLqueue()->Push(5, {}, true); },
        [&] { states.DLqueue()->Pull(5); },
        [&] { states.DLqueue()->Delete(5); },
    };

    for (const auto& command : commands) {
        EXPECT_THAT(failureOf(command), HasSubstr("database 98 cannot be selected: ERR"));
    }
    EXPECT_EQ(database.count("dl_queues"), 0);
}

TEST_F(DriverStateSettings, MalformedMongoUrlIsRefusedAndLeavesNoConnection) {
    redis_conf conf = direct();
    conf.name = "kelvro-h"_q;

    EXPECT_THROW((redis::DriverStateRedis{conf, "no connection string"}), mongocxx::v1::exception);
    EXPECT_THROW((redis::DriverStateRedis{conf, ""}), mongocxx::v1::exception);

    EXPECT_TRUE(test_support::eventually([this] { return clientsNamed("kelvro-h") == 0; }));
}

TEST_F(DriverStateSettings, UnreachableMongoIsRefusedAndLeavesNoConnection) {
    redis_conf conf = direct();
    conf.name = "kelvro-h"_q;

    EXPECT_THROW((redis::DriverStateRedis{conf, unreachableMongoUrl()}), mongocxx::v1::exception);

    EXPECT_TRUE(test_support::eventually([this] { return clientsNamed("kelvro-h") == 0; }));
}

class UnreachableRedis : public test_support::FixedMongoDatabase {
protected:
    static redis_conf nowhere() {
        redis_conf conf = redis_conf_from_json({});
        conf.port = test_support::TestSocket::unusedPort();
        return conf;
    }

    redis::DriverStateRedis states{nowhere(), mongoUrl()};
};

TEST_F(UnreachableRedis, DoesNotKeepTheStateFromBeingBuilt) {
    EXPECT_THAT(database.collections(), ElementsAre("dl_queues", "states"));
}

TEST_F(UnreachableRedis, LeavesTheWorkingCopyUsable) {
    states.SetValue(5, "a"_q, 2);

    EXPECT_EQ(states.GetAll(5), (QJsonObject{{"a"_q, 2}}));
}

TEST_F(UnreachableRedis, MakesEveryCommandOfTheStateThrow) {
    EXPECT_THROW(states.Pull(5), Connection::Exception);
    EXPECT_THROW(states.Push(5, false), Connection::Exception);
    EXPECT_THROW(states.Delete(5), Connection::Exception);
    EXPECT_THROW(states.DeleteDevices({5}, QDateTime(), QDateTime()), Connection::Exception);
    EXPECT_THROW(states.GetIDs("y"_q, "x"_q), Connection::Exception);
    EXPECT_THROW(states.GetAllStates("y"_q, "x"_q), Connection::Exception);
}

TEST_F(UnreachableRedis, MakesEveryCommandOfTheQueuesThrow) {
    EXPECT_THROW(states.DLqueue()->Pull(5), Connection::Exception);
    EXPECT_THROW(states.DLqueue()->Push(5, {}, false), Connection::Exception);
    EXPECT_THROW(states.DLqueue()->Delete(5), Connection::Exception);
    EXPECT_THROW(states.DLqueue()->DeleteDevices({5}), Connection::Exception);
}

TEST_F(UnreachableRedis, LetsNothingThroughToMongo) {
    database.insert("states", R"({"_id": 5, "state": {"a": 1}})");
    states.SetValue(5, "a"_q, 2);

    EXPECT_THROW(states.Push(5, true), Connection::Exception);
    EXPECT_THROW(states.Delete(5), Connection::Exception);
    EXPECT_THROW(states.Pull(5), Connection::Exception);

    EXPECT_EQ(database.count("states", R"({"_id": 5, "state.a": 1})"), 1);
    EXPECT_EQ(states.GetAll(5), (QJsonObject{{"a"_q, 2}}));
}

TEST_F(UnreachableRedis, NamesTheServerAndTheCommand) {
    redis_conf conf = nowhere();
    redis::DriverStateRedis states{conf, mongoUrl()};
    const std::string text = failureOf([&] { states.Pull(5); });

    EXPECT_THAT(text, HasSubstr("127.0.0.1:" + std::to_string(conf.port)));
    EXPECT_THAT(text, HasSubstr("GET"));
}

TEST_F(DriverStateSettings, ServerThatComesLaterIsFound) {
    server.stop();
    redis::DriverStateRedis states{direct(), mongoUrl()};
    EXPECT_THROW(states.Push(5, false), Connection::Exception);

    server.start();

    EXPECT_TRUE(states.Push(5, false));
    states.DLqueue()->Push(5, {}, false);
    EXPECT_TRUE(hasKey(":5", 0));
    EXPECT_TRUE(hasKey("5", 7));
}

TEST_F(DriverStateSettings, ServerThatComesBackIsUsedWithTheSameDatabases) {
    redis_conf conf = direct();
    conf.state_db = 3;
    redis::DriverStateRedis states{conf, mongoUrl()};
    states.Push(5, false);
    states.DLqueue()->Push(5, {}, false);
    server.stop();
    server.start();

    states.Push(6, false);
    states.DLqueue()->Push(6, {}, false);

    EXPECT_FALSE(hasKey(":5", 3));
    EXPECT_TRUE(hasKey(":6", 3));
    EXPECT_TRUE(hasKey("6", 7));
}

class RefusingRedis : public DriverStateSettings {
protected:
    RefusingRedis() {
        states.SetValue(5, "a"_q, 2);
        states.Push(5, true);
    }

    void refuse(const QByteArray& command) {
        server.run({"ACL", "SETUSER", "default", "-" + command});
    }

    redis::DriverStateRedis states{direct(), mongoUrl()};
};

TEST_F(RefusingRedis, DoesNotKeepAPushFromReachingMongo) {
    server.run({"CONFIG", "SET", "maxmemory", "1"});
    states.SetValue(5, "a"_q, 3);

    EXPECT_TRUE(states.Push(5, true));

    EXPECT_EQ(server.run({"GET", ":5"}), QVariant(R"({"a":2})"_qba));
    EXPECT_EQ(database.count("states", R"({"_id": 5, "state.a": 3})"), 1);
}

TEST_F(RefusingRedis, DoesNotKeepADeleteFromReachingMongo) {
    refuse("del");

    EXPECT_TRUE(states.Delete(5));
    EXPECT_TRUE(states.DeleteDevices({5}, QDateTime(), QDateTime()));

    EXPECT_TRUE(hasKey(":5", 0));
    EXPECT_EQ(database.count("states"), 0);
}

TEST_F(RefusingRedis, MakesPullTakeTheDurableCopy) {
    server.run({"SET", ":5", R"({"a":"shared"})"});
    refuse("get");

    EXPECT_TRUE(states.Pull(5));

    EXPECT_EQ(states.GetAll(5), (QJsonObject{{"a"_q, 2}}));
}

TEST_F(RefusingRedis, MakesTheListOfDevicesEmpty) {
    refuse("scan");

    EXPECT_THAT(states.GetIDs("*"_q, "*"_q), IsEmpty());
}

TEST_F(RefusingRedis, MakesTheStatesOfAllDevicesEmpty) {
    states.SetPrefix("x:y"_q);
    states.Push(5, false);
    ASSERT_EQ(states.GetAllStates("y"_q, "x"_q)->size(), 1);
    refuse("mget");

    EXPECT_TRUE(states.GetAllStates("y"_q, "x"_q)->isEmpty());
}

TEST_F(RefusingRedis, DoesNotKeepTheQueuesFromReachingMongo) {
    server.run({"CONFIG", "SET", "maxmemory", "1"});
    model::dl_queues queues;
    queues.lock = true;

    EXPECT_TRUE(states.DLqueue()->Push(5, queues, true));

    EXPECT_FALSE(hasKey("5", 7));
    EXPECT_TRUE(states.DLqueue()->Pull(5).lock);
}

// A document of more than 16 MiB, which Redis takes and MongoDB does not.
TEST_F(RefusingRedis, IsAheadWhenMongoRefuses) {
    const QByteArray large(17 << 20, 'x');
    states.SetValue(5, "a"_q, large);

    EXPECT_THROW(states.Push(5, true), mongocxx::v1::exception);

    EXPECT_EQ(server.run({"STRLEN", ":5"}), QVariant((17 << 20) + 8));
    EXPECT_EQ(database.count("states", R"({"_id": 5, "state.a": 2})"), 1);
}

} // namespace
