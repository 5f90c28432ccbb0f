#include "tests/redis/driver_state_fixture.h"

#include "tests/redis/scripted_replies.h"
#include "tests/support/stopwatch.h"

#include <atomic>
#include <chrono>
#include <optional>
#include <set>
#include <thread>

// Listing devices with SCAN and their states with MGET.
namespace {

using test_support::ScriptedReplies;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;
using namespace test_support::literals;

class DriverStateIds : public DriverStateTest {
protected:
    void setKeys(std::initializer_list<QByteArray> keys) {
        for (const QByteArray& key : keys) {
            server.run({"SET", key, "{}"});
        }
    }

    /// `count` keys of devices from `from` on, their states being {"n":DEVICE}.
    void setDevices(const QByteArray& prefix, int from, int count) {
        QList<QByteArray> command{"MSET"};
        for (int id = from; id < from + count; ++id) {
            const QByteArray number = QByteArray::number(id);
            command.append(prefix + number);
            command.append("{\"n\":" + number + '}');
        }
        server.run(command);
    }

    static std::set<int> distinct(const QList<QVariant>& ids) {
        std::set<int> distinct;
        for (const QVariant& id : ids) {
            distinct.insert(id.toInt());
        }
        return distinct;
    }

    static QList<QByteArray> scan(const QByteArray& cursor, const QByteArray& pattern) {
        return {"SCAN", cursor, "MATCH", pattern, "COUNT", "1000"};
    }
};

TEST_F(DriverStateIds, AreAskedForByTheSecondPartAndThenTheFirst) {
    states.GetIDs("first"_q, "second"_q);

    EXPECT_THAT(proxy.sent(), ElementsAre(scan("0", "second:first:*")));
}

TEST_F(DriverStateIds, OfMatchingKeysAreInts) {
    setKeys({"x:y:1", "x:y:20", "x:z:3", "y:x:4", "x:y5", "ax:y:6"});

    const QList<QVariant> ids = states.GetIDs("y"_q, "x"_q);

    EXPECT_THAT(ids, UnorderedElementsAre(QVariant(1), QVariant(20)));
    for (const QVariant& id : ids) {
        EXPECT_EQ(id.type(), QVariant::Int);
    }
}

TEST_F(DriverStateIds, OfNoMatchingKeyAreNone) {
    setKeys({"x:z:3"});

    EXPECT_THAT(states.GetIDs("y"_q, "x"_q), IsEmpty());
}

struct key_id {
    const char* name = nullptr;
    QByteArray key;
    int id = 0;

    friend void PrintTo(const key_id& key, std::ostream* out) { *out << key.name; }
};

class DriverStateIdOfKey : public DriverStateIds, public testing::WithParamInterface<key_id> {};

TEST_P(DriverStateIdOfKey, IsTheNumberAfterTheLastColon) {
    setKeys({GetParam().key});

    EXPECT_THAT(states.GetIDs("y"_q, "x"_q), ElementsAre(QVariant(GetParam().id)));
}

INSTANTIATE_TEST_SUITE_P(
    Key, DriverStateIdOfKey,
    testing::Values(
        key_id{"number", "x:y:1", 1}, key_id{"letters_are_zero", "x:y:abc", 0},
        key_id{"nothing_is_zero", "x:y:", 0}, key_id{"number_and_letters_are_zero", "x:y:1a", 0},
        key_id{"negative", "x:y:-4", -4}, key_id{"plus", "x:y:+4", 4},
        key_id{"leading_zeros", "x:y:007", 7}, key_id{"more_parts", "x:y:z:9", 9},
        key_id{"colon_last", "x:y:9:", 0}, key_id{"largest_int", "x:y:2147483647", 2147483647},
        key_id{"beyond_int_is_zero", "x:y:2147483648", 0}, key_id{"fraction_is_zero", "x:y:1.5", 0},
        key_id{"up_to_the_first_zero", "x:y:7\0:9"_qba, 7},
        key_id{"malformed_utf8_is_zero", "x:y:\xff", 0},
        key_id{"letters_beyond_ascii_before", "x:y:\xd0\x96:8", 8}),
    [](const auto& info) { return std::string{info.param.name}; });

TEST_F(DriverStateIds, OfKeysWithOneNumberAreRepeated) {
    setKeys({"x:y:1", "x:y:z:1", "x:y:01"});

    EXPECT_EQ(states.GetIDs("y"_q, "x"_q), (QList<QVariant>{1, 1, 1}));
}

TEST_F(DriverStateIds, DoNotDependOnThePrefixOrTheTypeOfTheKey) {
    server.run({"RPUSH", "x:y:1", "x"});
    states.SetPrefix("x:y"_q);

    EXPECT_THAT(states.GetIDs("y"_q, "x"_q), ElementsAre(QVariant(1)));
}

TEST_F(DriverStateIds, OfADeviceThatWasPushedAreFoundByThePartsOfItsPrefix) {
    states.SetPrefix("x:y"_q);
    states.Push(17, false);

    EXPECT_THAT(states.GetIDs("y"_q, "x"_q), ElementsAre(QVariant(17)));
}

TEST_F(DriverStateIds, OfOtherDatabasesAreNotFound) {
    server.run({"SET", "x:y:1", "{}"}, 1);
    server.run({"SET", "x:y:7", "{}"}, 7);

    EXPECT_THAT(states.GetIDs("y"_q, "x"_q), IsEmpty());
}

// Deliberate: the parts are not escaped, so a host may ask with a pattern.
TEST_F(DriverStateIds, AreFoundByPatternsToo) {
    setKeys({"xa:y:1", "xb:y:2", "xbb:y:3"});

    EXPECT_THAT(states.GetIDs("y"_q, "x?"_q), UnorderedElementsAre(QVariant(1), QVariant(2)));
    EXPECT_THAT(states.GetIDs("*"_q, "xb*"_q), UnorderedElementsAre(QVariant(2), QVariant(3)));
}

TEST_F(DriverStateIds, AreFoundByEmptyPartsToo) {
    setKeys({"::1", ":y:2"});

    EXPECT_THAT(states.GetIDs(QString(), QString()), ElementsAre(QVariant(1)));
}

// Deliberate: keys are Latin-1; '?' stands for any one byte then.
TEST_F(DriverStateIds, AreFoundByLatin1) {
    setKeys({"\xe9:y:1", "\xc3\xa9:y:2", "?:y:3", "k:y:4"});

    EXPECT_THAT(states.GetIDs("y"_q, "\u00e9"_q), ElementsAre(QVariant(1)));
    EXPECT_THAT(states.GetIDs("y"_q, "\u0416"_q),
                UnorderedElementsAre(QVariant(1), QVariant(3), QVariant(4)));
}

TEST_F(DriverStateIds, AreAskedForUntilTheCursorIsZeroAgain) {
    setDevices("x:y:", 0, 10'000);

    const QList<QVariant> ids = states.GetIDs("y"_q, "x"_q);

    EXPECT_THAT(distinct(ids), SizeIs(10'000));
    const redis_commands sent = proxy.sent();
    EXPECT_GT(sent.size(), 5U);
    EXPECT_EQ(sent.front().value(1), "0");
    for (std::size_t i = 1; i < sent.size(); ++i) {
        EXPECT_EQ(sent[i], scan(sent[i].value(1), "x:y:*"));
        EXPECT_NE(sent[i].value(1), "0");
    }
}

TEST_F(DriverStateIds, LoseNoKeyThatStaysWhileOthersComeAndGo) {
    setDevices("x:y:", 0, 10'000);
    std::atomic<int> changes = 0;
    std::jthread changing([&, port = server.port()](const std::stop_token& end) {
        // The table grows and shrinks all the time, which is where a cursor could lose its place.
        RedisClient::Connection other(
            RedisClient::ConnectionConfig("127.0.0.1"_q, QString(), port, QString()));
        while (!end.stop_requested()) {
            QList<QByteArray> set{"MSET"};
            QList<QByteArray> del{"DEL"};
            for (int id = 0; id < 20'000; ++id) {
                const QByteArray key = "x:y:other-" + QByteArray::number(id);
                set << key << "{}";
                del << key;
            }
            other.commandSync(set, 0);
            other.commandSync(del, 0);
            ++changes;
        }
    });

    const test_support::Stopwatch watch;
    for (int rounds = 0; rounds < 20 || changes < 3; ++rounds) {
        ASSERT_LT(watch.elapsed(), std::chrono::minutes(1)) << changes << " changes so far";
        const std::set<int> seen = distinct(states.GetIDs("y"_q, "x"_q));
        for (int id = 1; id < 10'000; ++id) {
            ASSERT_TRUE(seen.contains(id)) << "device " << id << " in round " << rounds;
        }
    }
}

class ScriptedDriverState : public test_support::FixedMongoDatabase {
protected:
    // The commands beside, in order, must be those that the state object sends.
    redis::DriverStateRedis& answered(const QList<QByteArray>& replies) {
        peer.emplace(replies);
        redis_conf conf = redis_conf_from_json({});
        conf.port = peer->port();
        return states.emplace(conf, test_support::mongoUrl());
    }

    std::vector<QByteArray> cursors() const {
        std::vector<QByteArray> cursors;
        for (const QList<QByteArray>& command : peer->commands()) {
            cursors.push_back(command.value(1));
        }
        return cursors;
    }

    static QByteArray page(const QByteArray& cursor, const QList<QByteArray>& keys) {
        return ScriptedReplies::array(
            {ScriptedReplies::bulk(cursor), ScriptedReplies::bulks(keys)});
    }

    std::optional<ScriptedReplies> peer;
    std::optional<redis::DriverStateRedis> states;
};

TEST_F(ScriptedDriverState, KeepsTheDuplicatesAndTheOrderOfTheScan) {
    auto& states = answered({page("17", {"x:y:3", "x:y:1", "x:y:3"}), page("0", {"x:y:1"})});

    EXPECT_EQ(states.GetIDs("y"_q, "x"_q), (QList<QVariant>{3, 1, 3, 1}));
    EXPECT_THAT(cursors(), ElementsAre("0", "17"));
}

TEST_F(ScriptedDriverState, GoesOnAfterAPageWithoutKeys) {
    auto& states = answered({page("5", {}), page("9", {"x:y:1"}), page("0", {})});

    EXPECT_EQ(states.GetIDs("y"_q, "x"_q), (QList<QVariant>{1}));
    EXPECT_THAT(cursors(), ElementsAre("0", "5", "9"));
}

TEST_F(ScriptedDriverState, GoesOnAfterAPageWhoseKeysAreNoList) {
    const QByteArray noList =
        ScriptedReplies::array({ScriptedReplies::bulk("5"), ScriptedReplies::bulk("x:y:1")});
    auto& states = answered({noList, page("0", {"x:y:2"})});

    EXPECT_EQ(states.GetIDs("y"_q, "x"_q), (QList<QVariant>{2}));
}

TEST_F(ScriptedDriverState, EndsTheScanAtACursorThatIsNoNumber) {
    auto& states = answered({page("next", {"x:y:1"}), page("0", {"x:y:2"})});

    EXPECT_EQ(states.GetIDs("y"_q, "x"_q), (QList<QVariant>{1}));
}

TEST_F(ScriptedDriverState, EndsTheScanAtACursorBeyond32Bits) {
    auto& states = answered({page("2147483648", {"x:y:1"}), page("0", {"x:y:2"})});

    EXPECT_EQ(states.GetIDs("y"_q, "x"_q), (QList<QVariant>{1}));
}

TEST_F(ScriptedDriverState, GoesOnAtTheLargestCursorOf32Bits) {
    auto& states = answered({page("2147483647", {"x:y:1"}), page("0", {"x:y:2"})});

    EXPECT_EQ(states.GetIDs("y"_q, "x"_q), (QList<QVariant>{1, 2}));
    EXPECT_THAT(cursors(), ElementsAre("0", "2147483647"));
}

TEST_F(ScriptedDriverState, EndsTheScanAtARefusalOrAnotherReply) {
    for (const char* reply : {"-ERR no scan\r\n", "$-1\r\n", ":5\r\n", "+OK\r\n", "*0\r\n"}) {
        auto& states = answered({reply, page("0", {"x:y:2"})});

        EXPECT_THAT(states.GetIDs("y"_q, "x"_q), IsEmpty()) << reply;
        EXPECT_THAT(cursors(), SizeIs(1)) << reply;
    }
}

TEST_F(ScriptedDriverState, TakesAKeyThatIsNoTextAsZero) {
    auto& states = answered({ScriptedReplies::array(
        {ScriptedReplies::bulk("0"), ScriptedReplies::array({"$-1\r\n", "$0\r\n\r\n"})})});

    EXPECT_EQ(states.GetIDs("y"_q, "x"_q), (QList<QVariant>{0, 0}));
}

TEST_F(ScriptedDriverState, GivesTheLastStateOfADeviceThatIsListedTwice) {
    auto& states = answered(
        {page("0", {"x:y:3", "x:y:3"}), ScriptedReplies::bulks({"{\"a\":1}", "{\"a\":2}"})});

    EXPECT_EQ(*states.GetAllStates("y"_q, "x"_q),
              (QHash<int, QJsonObject>{{3, QJsonObject{{"a"_q, 2}}}}));
    EXPECT_EQ(peer->commands().back(), (QList<QByteArray>{"MGET", "x:y:3", "x:y:3"}));
}

TEST_F(ScriptedDriverState, GivesNoStatesForFewerRepliesThanKeys) {
    auto& states = answered({page("0", {"x:y:3", "x:y:4"}), ScriptedReplies::bulks({"{\"a\":1}"})});

    EXPECT_EQ(*states.GetAllStates("y"_q, "x"_q),
              (QHash<int, QJsonObject>{{3, QJsonObject{{"a"_q, 1}}}}));
}

TEST_F(ScriptedDriverState, GivesNoStatesForARefusal) {
    auto& states = answered({page("0", {"x:y:3"}), "-ERR no\r\n"});

    EXPECT_TRUE(states.GetAllStates("y"_q, "x"_q)->isEmpty());
}

// Any reply but a byte string is like a missing key.
TEST_F(ScriptedDriverState, PullsTheDurableCopyAfterAnyOtherReply) {
    database.insert("states", R"({"_id": 17, "state": {"a": 1}})");
    for (const char* reply : {"-ERR no\r\n", "$-1\r\n", ":5\r\n", "*1\r\n$2\r\n{}\r\n"}) {
        auto& states = answered({reply});
        states.Pull(17);

        EXPECT_EQ(states.GetAll(17), (QJsonObject{{"a"_q, 1}})) << reply;
    }
}

using DriverStateAll = DriverStateIds;

TEST_F(DriverStateAll, AreAskedForByOneCommandInTheOrderOfTheIds) {
    setKeys({"x:y:1", "x:y:20", "x:y:3"});
    const QList<QVariant> ids = states.GetIDs("y"_q, "x"_q);
    proxy.forget();

    states.GetAllStates("y"_q, "x"_q);

    QList<QByteArray> mget{"MGET"};
    for (const QVariant& id : ids) {
        mget.append("x:y:" + QByteArray::number(id.toInt()));
    }
    EXPECT_THAT(mget, SizeIs(4));
    EXPECT_THAT(proxy.sent(), ElementsAre(scan("0", "x:y:*"), mget));
}

TEST_F(DriverStateAll, AreTheObjectsByDevice) {
    server.run({"SET", "x:y:1", R"({"a":1})"});
    server.run({"SET", "x:y:20", R"({"b":{"c":[2]}})"});
    server.run({"SET", "x:z:3", R"({"d":3})"});

    EXPECT_EQ(
        *states.GetAllStates("y"_q, "x"_q),
        (QHash<int, QJsonObject>{{1, QJsonObject{{"a"_q, 1}}},
                                 {20, QJsonDocument::fromJson(R"({"b":{"c":[2]}})").object()}}));
}

TEST_F(DriverStateAll, OfNoDeviceAreAskedForWithoutAKeyAndEmpty) {
    const auto all = states.GetAllStates("y"_q, "x"_q);

    ASSERT_NE(all, nullptr);
    EXPECT_TRUE(all->isEmpty());
    EXPECT_THAT(proxy.sent(), ElementsAre(scan("0", "x:y:*"), QList<QByteArray>{"MGET"}));
}

TEST_F(DriverStateAll, LeaveTheWorkingCopiesAlone) {
    setA(1, 5);
    server.run({"SET", "drv:y:1", R"({"b":1})"});
    server.run({"SET", "drv:y:2", R"({"b":2})"});

    (*states.GetAllStates("y"_q, "drv"_q))[1].insert("c"_q, 3);

    EXPECT_EQ(states.GetAll(1), (QJsonObject{{"a"_q, 5}}));
    EXPECT_EQ(states.GetAll(2), QJsonObject{});
}

TEST_F(DriverStateAll, AreANewHashEachTime) {
    EXPECT_NE(states.GetAllStates("y"_q, "x"_q), states.GetAllStates("y"_q, "x"_q));
}

TEST_F(DriverStateAll, HaveAnEmptyObjectForMalformedJson) {
    setKeys({"x:y:1"});
    server.run({"SET", "x:y:2", "no json"});
    server.run({"SET", "x:y:3", "[1]"});

    EXPECT_EQ(*states.GetAllStates("y"_q, "x"_q),
              (QHash<int, QJsonObject>{{1, {}}, {2, {}}, {3, {}}}));
}

TEST_F(DriverStateAll, LeaveOutAKeyOfAnotherType) {
    setKeys({"x:y:1"});
    server.run({"RPUSH", "x:y:2", "{}"});

    EXPECT_EQ(*states.GetAllStates("y"_q, "x"_q), (QHash<int, QJsonObject>{{1, {}}}));
}

// The key that is asked for is made of the number, not taken from the scan.
TEST_F(DriverStateAll, LeaveOutAKeyThatIsNotMadeOfItsNumberAlone) {
    setKeys({"x:y:abc", "x:y:z:9", "x:y:007"});

    EXPECT_TRUE(states.GetAllStates("y"_q, "x"_q)->isEmpty());
    const QList<QByteArray> mget = proxy.sent().back();
    EXPECT_THAT(mget.mid(1), UnorderedElementsAre("x:y:0", "x:y:9", "x:y:7"));
}

// Deliberate: the scan's pattern is Latin-1, the keys that are asked for are UTF-8.
TEST_F(DriverStateAll, AreAskedForInUtf8) {
    server.run({"SET", "\xe9:y:1", R"({"a":"latin1"})"});
    EXPECT_TRUE(states.GetAllStates("y"_q, "\u00e9"_q)->isEmpty());
    EXPECT_THAT(proxy.sent().back(), ElementsAre("MGET", "\xc3\xa9:y:1"));

    server.run({"SET", "\xc3\xa9:y:1", R"({"a":"utf8"})"});
    EXPECT_EQ(*states.GetAllStates("y"_q, "\u00e9"_q),
              (QHash<int, QJsonObject>{{1, QJsonObject{{"a"_q, "utf8"_q}}}}));
}

TEST_F(DriverStateAll, AreFoundByPartsThatLookLikePlaceholders) {
    server.run({"SET", "%2:%3:1", R"({"a":1})"});

    EXPECT_EQ(*states.GetAllStates("%3"_q, "%2"_q),
              (QHash<int, QJsonObject>{{1, QJsonObject{{"a"_q, 1}}}}));
}

TEST_F(DriverStateAll, UseTheOverriddenIds) {
    struct : redis::DriverStateRedis {
        using DriverStateRedis::DriverStateRedis;
        QList<QVariant> GetIDs(const QString& first, const QString& second) override {
            asked = second + QLatin1Char('/') + first;
            return {5, 4, 5};
        }
        QString asked;
    } overriding{conf(), test_support::mongoUrl()};
    setDevices("x:y:", 3, 3);
    proxy.forget();

    EXPECT_EQ(
        *overriding.GetAllStates("y"_q, "x"_q),
        (QHash<int, QJsonObject>{{4, QJsonObject{{"n"_q, 4}}}, {5, QJsonObject{{"n"_q, 5}}}}));
    EXPECT_EQ(overriding.asked, "x/y"_q);
    EXPECT_THAT(proxy.sent(), ElementsAre(QList<QByteArray>{"MGET", "x:y:5", "x:y:4", "x:y:5"}));
}

TEST_F(DriverStateAll, UseOverriddenIdsOfOtherTypesByTheirText) {
    struct : redis::DriverStateRedis {
        using DriverStateRedis::DriverStateRedis;
        QList<QVariant> GetIDs(const QString& /*first*/, const QString& /*second*/) override {
            return {"04"_q, qlonglong{5}};
        }
    } overriding{conf(), test_support::mongoUrl()};
    setDevices("x:y:0", 4, 1);
    setDevices("x:y:", 5, 1);
    proxy.forget();

    EXPECT_EQ(
        *overriding.GetAllStates("y"_q, "x"_q),
        (QHash<int, QJsonObject>{{4, QJsonObject{{"n"_q, 4}}}, {5, QJsonObject{{"n"_q, 5}}}}));
    EXPECT_THAT(proxy.sent(), ElementsAre(QList<QByteArray>{"MGET", "x:y:04", "x:y:5"}));
}

TEST_F(DriverStateAll, OfTenThousandDevicesComeAtOnce) {
    setDevices("x:y:", 0, 10'000);

    const auto all = states.GetAllStates("y"_q, "x"_q);

    EXPECT_EQ(all->size(), 10'000);
    for (int id = 0; id < 10'000; ++id) {
        ASSERT_EQ(all->value(id), (QJsonObject{{"n"_q, id}}));
    }
}

} // namespace
