#include "tests/redis/driver_state_fixture.h"

#include "tests/support/eventually.h"

// Pull, Push and Delete: what goes to Redis, what to MongoDB, and what stays in memory.
namespace {

using test_support::canonical;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace test_support::literals;

using DriverState = DriverStateTest;

class NewDriverState : public RedisStoreTest {
protected:
    redis_conf named(const QString& name) const {
        redis_conf named = conf();
        named.name = name;
        return named;
    }
};

TEST_F(NewDriverState, HasAConnectionForItselfAndOneForItsQueues) {
    redis::DriverStateRedis states{conf(), test_support::mongoUrl()};

    EXPECT_EQ(proxy.connections(), 2);
}

TEST_F(NewDriverState, AsksRedisForNoData) {
    redis::DriverStateRedis states{conf(), test_support::mongoUrl()};

    EXPECT_THAT(proxy.sent(), ElementsAre(QList<QByteArray>{"PING"}, QList<QByteArray>{"PING"}));
}

TEST_F(NewDriverState, GivesBothConnectionsItsName) {
    redis::DriverStateRedis states{named("kelvro-h"_q), test_support::mongoUrl()};

    const QByteArray clients = server.run({"CLIENT", "LIST"}).toByteArray();
    EXPECT_EQ(clients.count("name=kelvro-h "), 2);
}

TEST_F(NewDriverState, LaysBothCollectionsOut) {
    redis::DriverStateRedis states{conf(), test_support::mongoUrl()};

    EXPECT_THAT(database.collections(), ElementsAre("dl_queues", "states"));
    for (const char* collection : {"dl_queues", "states"}) {
        EXPECT_THAT(database.indexKeys(collection),
                    ElementsAre(canonical(R"({"_id": 1})"), canonical(R"({"_id": "hashed"})")));
    }
}

TEST_F(NewDriverState, HasAnEmptyPrefix) {
    redis::DriverStateRedis states{conf(), test_support::mongoUrl()};

    EXPECT_EQ(states.GetPrefix(), QString());
}

TEST_F(NewDriverState, ClosesBothConnectionsAtItsEnd) {
    {
        redis::DriverStateRedis states{named("kelvro-h"_q), test_support::mongoUrl()};
        ASSERT_EQ(server.run({"CLIENT", "LIST"}).toByteArray().count("name=kelvro-h "), 2);
    }

    EXPECT_TRUE(test_support::eventually([this] {
        return server.run({"CLIENT", "LIST"}).toByteArray().count("name=kelvro-h ") == 0;
    }));
}

TEST_F(DriverState, GivesTheStoredPrefixItself) {
    EXPECT_EQ(states.GetPrefix(), "drv"_q);
    EXPECT_EQ(&states.GetPrefix(), &states.GetPrefix());

    const QString& prefix = states.GetPrefix();
    states.SetPrefix("other"_q);
    EXPECT_EQ(prefix, "other"_q);
}

TEST_F(DriverState, GivesItsQueuesAlwaysTheSame) {
    EXPECT_NE(states.DLqueue(), nullptr);
    EXPECT_EQ(states.DLqueue(), states.DLqueue());
}

TEST_F(DriverState, PushSendsTheCompactJsonOfTheWorkingCopy) {
    states.SetValue(17, "b"_q, "x y"_qba);
    states.SetValue(17, "a"_q, 5);
    states.SetValueAsVariant(17, "c"_q, QJsonObject{{"d"_q, 2.5}});

    EXPECT_TRUE(states.Push(17, false));

    EXPECT_THAT(proxy.sentOver(2), ElementsAre(QList<QByteArray>{
                                       "SET", "drv:17", R"({"a":5,"b":"x y","c":{"d":2.5}})"}));
    EXPECT_THAT(proxy.sentOver(1), IsEmpty());
    EXPECT_EQ(inRedis("drv:17"), R"({"a":5,"b":"x y","c":{"d":2.5}})");
}

TEST_F(DriverState, PushWithoutPersistingWritesNothingToMongo) {
    setA(17, 1.5);
    states.Push(17, false);

    EXPECT_EQ(database.count("states"), 0);
}

TEST_F(DriverState, PushOfADeviceNeverSeenStoresAnEmptyObject) {
    EXPECT_TRUE(states.Push(17, false));

    EXPECT_EQ(inRedis("drv:17"), "{}");
    EXPECT_EQ(database.count("states"), 0);
}

TEST_F(DriverState, PushWithPersistingStoresBothCopies) {
    setA(17, 2);

    EXPECT_TRUE(states.Push(17, true));

    EXPECT_EQ(inRedis("drv:17"), "{\"a\":2}");
    EXPECT_THAT(database.documents("states"),
                ElementsAre(canonical(R"({"_id": 17, "state": {"a": 2.0}})")));
    EXPECT_EQ(database.count("dl_queues"), 0);
}

TEST_F(DriverState, PushWithPersistingGivesTrueTheSecondTimeToo) {
    setA(17, 2);

    EXPECT_TRUE(states.Push(17, true));
    EXPECT_TRUE(states.Push(17, true));
    EXPECT_EQ(database.count("states"), 1);
}

TEST_F(DriverState, PushWithoutPersistingLeavesTheDurableCopyAsItWas) {
    setA(17, 2);
    states.Push(17, true);
    setA(17, 3);
    states.Push(17, false);

    EXPECT_EQ(inRedis("drv:17"), "{\"a\":3}");
    EXPECT_THAT(database.documents("states"),
                ElementsAre(canonical(R"({"_id": 17, "state": {"a": 2.0}})")));
}

TEST_F(DriverState, PushReplacesAKeyOfAnyType) {
    server.run({"RPUSH", "drv:17", "x"});
    states.Push(17, false);

    EXPECT_EQ(inRedis("drv:17"), "{}");
}

TEST_F(DriverState, PushLeavesTheWorkingCopy) {
    setA(17, 2);
    states.Push(17, true);

    EXPECT_EQ(states.GetAll(17), (QJsonObject{{"a"_q, 2}}));
}

TEST_F(DriverState, PullSendsOneGet) {
    EXPECT_TRUE(states.Pull(17));

    EXPECT_THAT(proxy.sent(), ElementsAre(QList<QByteArray>{"GET", "drv:17"}));
}

TEST_F(DriverState, PullReplacesTheWholeWorkingCopy) {
    setA(17, 2);
    pullText(17, R"( {"b" : 3} )");

    EXPECT_EQ(states.GetAll(17), (QJsonObject{{"b"_q, 3}}));
}

TEST_F(DriverState, PullLeavesOtherDevices) {
    setA(18, 2);
    pullText(17, R"({"b":3})");

    EXPECT_EQ(states.GetAll(18), (QJsonObject{{"a"_q, 2}}));
}

TEST_F(DriverState, PullPrefersRedisToMongo) {
    database.insert("states", R"({"_id": 17, "state": {"a": "durable"}})");
    pullText(17, R"({"a":"shared"})");

    EXPECT_EQ(states.GetAll(17), (QJsonObject{{"a"_q, "shared"_q}}));
}

TEST_F(DriverState, PullOfAKeyThatIsNotInRedisRestoresTheDurableCopy) {
    states.SetValue(17, "a"_q, 5);
    states.SetValue(17, "b"_q, "x"_qba);
    states.Push(17, true);
    server.run({"DEL", "drv:17"});
    states.SetValue(17, "c"_q, 1);

    EXPECT_TRUE(states.Pull(17));

    EXPECT_EQ(states.GetAll(17), (QJsonObject{{"a"_q, 5}, {"b"_q, "x"_q}}));
}

TEST_F(DriverState, PullDoesNotPutTheDurableCopyBackIntoRedis) {
    database.insert("states", R"({"_id": 17, "state": {"a": 1}})");
    states.Pull(17);

    EXPECT_EQ(server.run({"EXISTS", "drv:17"}), QVariant(0));
}

TEST_F(DriverState, PullOfADeviceThatIsNowhereIsEmpty) {
    setA(17, 2);

    EXPECT_TRUE(states.Pull(17));

    EXPECT_EQ(states.GetAll(17), QJsonObject{});
}

TEST_F(DriverState, PullOfAnEmptyObjectInRedisDoesNotAskMongo) {
    database.insert("states", R"({"_id": 17, "state": {"a": 1}})");
    pullText(17, "{}");

    EXPECT_EQ(states.GetAll(17), QJsonObject{});
}

class MalformedState : public DriverStateTest, public testing::WithParamInterface<const char*> {};

// What is there is taken, also when it says nothing: MongoDB is not asked.
TEST_P(MalformedState, InRedisIsAnEmptyObject) {
    database.insert("states", R"({"_id": 17, "state": {"a": 1}})");
    setA(17, 2);
    pullText(17, GetParam());

    EXPECT_EQ(states.GetAll(17), QJsonObject{});
}

INSTANTIATE_TEST_SUITE_P(Text, MalformedState,
                         testing::Values("", " ", "no json", "[1,2]", "5", "\"text\"", "null", "{",
                                         "{\"a\":1} x", "{\"a\":01}", "{'a':1}", "{\"a\":\"\xff\"}",
                                         "\xef\xbb\xbf"));

TEST_F(DriverState, PullOfAKeyOfAnotherTypeRestoresTheDurableCopy) {
    database.insert("states", R"({"_id": 17, "state": {"a": 1}})");
    server.run({"RPUSH", "drv:17", R"({"a":2})"});

    EXPECT_TRUE(states.Pull(17));

    EXPECT_EQ(states.GetAll(17), (QJsonObject{{"a"_q, 1}}));
}

TEST_F(DriverState, DeleteSendsOneDelAndRemovesBothCopies) {
    setA(17, 2);
    states.Push(17, true);
    setA(18, 2);
    states.Push(18, true);
    proxy.forget();

    EXPECT_TRUE(states.Delete(17));

    EXPECT_THAT(proxy.sent(), ElementsAre(QList<QByteArray>{"DEL", "drv:17"}));
    EXPECT_EQ(server.run({"KEYS", "*"}), QVariant(QVariantList{"drv:18"_qba}));
    EXPECT_THAT(database.documents("states"),
                ElementsAre(canonical(R"({"_id": 18, "state": {"a": 2.0}})")));
}

// Deliberate: the working copy stays until the next Pull.
TEST_F(DriverState, DeleteLeavesTheWorkingCopyUntilTheNextPull) {
    setA(17, 2);
    states.Push(17, true);
    states.Delete(17);

    EXPECT_EQ(states.GetAll(17), (QJsonObject{{"a"_q, 2}}));
    states.Pull(17);
    EXPECT_EQ(states.GetAll(17), QJsonObject{});
}

TEST_F(DriverState, DeleteOfAnUnknownDeviceGivesTrue) {
    EXPECT_TRUE(states.Delete(17));
}

TEST_F(DriverState, DeleteRemovesADurableCopyThatIsNotInRedis) {
    database.insert("states", R"({"_id": 17, "state": {"a": 1}})");
    states.Delete(17);

    EXPECT_EQ(database.count("states"), 0);
}

TEST_F(DriverState, DeleteLeavesTheQueuesOfTheDevice) {
    states.DLqueue()->Push(17, {}, true);
    states.Delete(17);

    EXPECT_EQ(server.run({"EXISTS", "17"}, 7), QVariant(1));
    EXPECT_EQ(database.count("dl_queues"), 1);
}

TEST_F(DriverState, DeleteDevicesDeletesInTheOrderOfTheList) {
    for (const int id : {1, 2, 3}) {
        states.Push(id, true);
    }
    proxy.forget();

    EXPECT_TRUE(states.DeleteDevices({3, 1, 9, 3}, QDateTime(), QDateTime()));

    EXPECT_THAT(proxy.sent(),
                ElementsAre(QList<QByteArray>{"DEL", "drv:3"}, QList<QByteArray>{"DEL", "drv:1"},
                            QList<QByteArray>{"DEL", "drv:9"}, QList<QByteArray>{"DEL", "drv:3"}));
    EXPECT_THAT(database.documents("states"), ElementsAre(canonical(R"({"_id": 2, "state": {}})")));
}

TEST_F(DriverState, DeleteDevicesOfNoneGivesTrueAndSendsNothing) {
    EXPECT_TRUE(states.DeleteDevices({}, QDateTime(), QDateTime()));
    EXPECT_THAT(proxy.sent(), IsEmpty());
}

// Deliberate: the period is not read.
TEST_F(DriverState, DeleteDevicesDeletesWhateverThePeriod) {
    states.Push(1, true);
    const QDateTime past = QDateTime::fromSecsSinceEpoch(17);

    EXPECT_TRUE(states.DeleteDevices({1}, past, past));

    EXPECT_EQ(server.run({"DBSIZE"}), QVariant(0));
    EXPECT_EQ(database.count("states"), 0);
}

TEST_F(DriverState, DeleteDevicesCallsTheOverriddenDelete) {
    struct : redis::DriverStateRedis {
        using DriverStateRedis::DriverStateRedis;
        bool Delete(int modem_id) override {
            deleted.append(modem_id);
            return false;
        }
        QList<int> deleted;
    } overriding{conf(), test_support::mongoUrl()};
    proxy.forget();

    EXPECT_TRUE(overriding.DeleteDevices({3, 1, 3}, QDateTime(), QDateTime()));

    EXPECT_EQ(overriding.deleted, (QList<int>{3, 1, 3}));
    EXPECT_THAT(proxy.sent(), IsEmpty());
}

struct key_case {
    const char* name = nullptr;
    QString prefix;
    int modem_id = 0;
    QByteArray key;

    friend void PrintTo(const key_case& key, std::ostream* out) { *out << key.name; }
};

class DriverStateKey : public DriverStateTest, public testing::WithParamInterface<key_case> {};

TEST_P(DriverStateKey, IsTheSameForPushPullAndDelete) {
    const auto& [name, prefix, modem_id, key] = GetParam();
    states.SetPrefix(prefix);
    states.Push(modem_id, false);
    EXPECT_EQ(server.run({"KEYS", "*"}), QVariant(QVariantList{key}));

    server.run({"SET", key, R"({"b":3})"});
    states.Pull(modem_id);
    EXPECT_EQ(states.GetAll(modem_id), (QJsonObject{{"b"_q, 3}}));

    states.Delete(modem_id);
    EXPECT_EQ(server.run({"DBSIZE"}), QVariant(0));
}

INSTANTIATE_TEST_SUITE_P(
    Of, DriverStateKey,
    testing::Values(key_case{"prefix_and_device", "drv"_q, 17, "drv:17"},
                    key_case{"no_prefix", QString(), 7, ":7"},
                    key_case{"device_zero", "drv"_q, 0, "drv:0"},
                    key_case{"negative_device", "drv"_q, -3, "drv:-3"},
                    key_case{"smallest_device", "drv"_q, -2147483647 - 1, "drv:-2147483648"},
                    key_case{"largest_device", "drv"_q, 2147483647, "drv:2147483647"},
                    key_case{"prefix_of_parts", "a:b:"_q, 17, "a:b::17"},
                    key_case{"prefix_with_spaces", "a b\n"_q, 17, "a b\n:17"},
                    key_case{"latin1_prefix", "\u00e9\u00ff"_q, 17, "\xe9\xff:17"},
                    // Deliberate: keys are Latin-1.
                    key_case{"prefix_beyond_latin1", "a\u0416"_q, 17, "a?:17"},
                    key_case{"prefix_with_a_zero", "a\0b"_q, 17, "a\0b:17"_qba}),
    [](const auto& info) { return std::string{info.param.name}; });

TEST_F(DriverState, PrefixCountsWhenTheCommandIsSent) {
    setA(17, 2);
    states.Push(17, false);
    states.SetPrefix("other"_q);
    states.Pull(17);

    EXPECT_EQ(states.GetAll(17), QJsonObject{});
    EXPECT_EQ(inRedis("drv:17"), "{\"a\":2}");
}

TEST_F(DriverState, KeepsAStateOfAMebibyte) {
    states.SetValue(17, "text"_q, QByteArray(1 << 20, 'x'));
    const QJsonObject state = states.GetAll(17);
    states.Push(17, true);
    EXPECT_EQ(server.run({"STRLEN", "drv:17"}), QVariant((1 << 20) + 11));

    states.SetValue(17, "text"_q, 0);
    states.Pull(17);
    EXPECT_EQ(states.GetAll(17), state);

    server.run({"DEL", "drv:17"});
    states.Pull(17);
    EXPECT_EQ(states.GetAll(17), state);
}

TEST_F(DriverState, WritesUtf8IntoRedis) {
    states.SetValue(17, "\u0416"_q, "\xf0\x9f\x94\x8c"_qba);
    states.Push(17, true);

    EXPECT_EQ(inRedis("drv:17"), "{\"\xd0\x96\":\"\xf0\x9f\x94\x8c\"}");
    EXPECT_THAT(database.documents("states"),
                ElementsAre(canonical("{\"_id\": 17, \"state\": {\"\u0416\": \"\U0001F50C\"}}")));
}

TEST_F(DriverState, OfAnotherObjectIsSeenAfterAPull) {
    redis::DriverStateRedis other{conf(), test_support::mongoUrl()};
    other.SetPrefix("drv"_q);
    setA(17, 2);
    states.Push(17, false);

    EXPECT_EQ(other.GetAll(17), QJsonObject{});
    other.Pull(17);
    EXPECT_EQ(other.GetAll(17), (QJsonObject{{"a"_q, 2}}));
}

} // namespace
