#include "redis/dl_queue.h"

#include "tests/redis/redis_store_fixture.h"
#include "tests/redis/scripted_replies.h"
#include "tests/support/record_equality.h"

#include <mongocxx/v1/exception.hpp>

#include <QJsonArray>

#include <optional>
#include <string>

namespace {

using model::dl_queues;
using test_support::canonical;
using test_support::mongoUrl;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace test_support::literals;

using queue_status = enum dl_queues::status;

class DownlinkQueue : public RedisStoreTest {
protected:
    /// One queue with one element.
    static dl_queues sample(const QString& type = QStringLiteral("relay")) {
        dl_queues::element element;
        element.data = QJsonObject{{"n"_q, 5}, {"list"_q, QJsonArray{1.5, "x"_q, true}}};
        element.type = type;
        element.db_id = "5f0e"_q;
        element.status = queue_status::FAIL;
        element.repeat = 4;

        dl_queues queues;
        queues.dl["q1"_q].elements.insert("e7"_q, element);
        queues.dl["q1"_q].repeat = 1;
        queues.dl["q1"_q].timeout = 2;
        queues.dl["q1"_q].start_from = 3;
        queues.dl["q1"_q].status = queue_status::DONE;
        queues.lock = true;
        queues.status = queue_status::WAIT;
        return queues;
    }

    static constexpr const char* sampleJson =
        R"({"dl":{"q1":{"e7":{"data":{"list":[1.5,"x",true],"n":5},"db_id":"5f0e","repeat":4,)"
        R"("status":"FAIL","type":"relay"},"repeat":1,"start_from":3,"status":"DONE",)"
        R"("timeout":2}},"lock":true,"status":"WAIT"})";

    /// In MongoDB every number is a double.
    static constexpr const char* sampleDocument =
        R"({"_id": 17, "state": {"dl":{"q1":{"e7":{"data":{"list":[1.5,"x",true],"n":5.0},)"
        R"("db_id":"5f0e","repeat":4.0,"status":"FAIL","type":"relay"},"repeat":1.0,)"
        R"("start_from":3.0,"status":"DONE","timeout":2.0}},"lock":true,"status":"WAIT"}})";

    QVariant inRedis(const QByteArray& key, int db = 7) { return server.run({"GET", key}, db); }

    /// What the queues sent over their one connection, but for connecting.
    redis_commands sent() const {
        redis_commands sent;
        for (const QList<QByteArray>& command : proxy.sent()) {
            if (command != QList<QByteArray>{"PING"} && command.first() != "SELECT") {
                sent.push_back(command);
            }
        }
        return sent;
    }

    redis::dl_queue queues{conf(), mongoUrl()};
};

TEST_F(DownlinkQueue, HasOneConnectionAndAsksForNoData) {
    EXPECT_EQ(proxy.connections(), 1);
    EXPECT_THAT(proxy.sent(), ElementsAre(QList<QByteArray>{"PING"}));
}

TEST_F(DownlinkQueue, LaysItsCollectionOutAlone) {
    EXPECT_THAT(database.collections(), ElementsAre("dl_queues"));
    EXPECT_THAT(database.indexKeys("dl_queues"),
                ElementsAre(canonical(R"({"_id": 1})"), canonical(R"({"_id": "hashed"})")));
}

TEST_F(DownlinkQueue, SelectsItsDatabaseBeforeTheFirstCommand) {
    proxy.forget();
    queues.Pull(17);
    queues.Pull(17);

    EXPECT_THAT(proxy.sent(),
                ElementsAre(QList<QByteArray>{"SELECT", "7"}, QList<QByteArray>{"GET", "17"},
                            QList<QByteArray>{"GET", "17"}));
}

TEST_F(DownlinkQueue, PushSendsTheCompactJsonUnderTheDeviceNumberAlone) {
    EXPECT_TRUE(queues.Push(17, sample(), false));

    EXPECT_THAT(sent(), ElementsAre(QList<QByteArray>{"SET", "17", sampleJson}));
    EXPECT_EQ(inRedis("17"), QVariant(QByteArray(sampleJson)));
    EXPECT_EQ(server.run({"DBSIZE"}, 7), QVariant(1));
    EXPECT_EQ(server.run({"DBSIZE"}, 0), QVariant(0));
}

TEST_F(DownlinkQueue, PushWithoutPersistingLeavesMongoAlone) {
    queues.Push(17, sample(), false);

    EXPECT_EQ(database.count("dl_queues"), 0);
}

TEST_F(DownlinkQueue, PushOfTheEmptyRecordStoresItsJson) {
    queues.Push(17, {}, true);

    EXPECT_EQ(inRedis("17"), QVariant(R"({"dl":{},"lock":false,"status":"NONE"})"_qba));
    EXPECT_THAT(database.documents("dl_queues"),
                ElementsAre(canonical(
                    R"({"_id": 17, "state": {"dl": {}, "lock": false, "status": "NONE"}})")));
}

TEST_F(DownlinkQueue, PushWithPersistingStoresBothCopies) {
    EXPECT_TRUE(queues.Push(17, sample(), true));

    EXPECT_EQ(inRedis("17"), QVariant(QByteArray(sampleJson)));
    EXPECT_THAT(database.documents("dl_queues"), ElementsAre(canonical(sampleDocument)));
    EXPECT_THAT(database.collections(), ElementsAre("dl_queues"));
}

TEST_F(DownlinkQueue, PushWithPersistingReplacesBothCopiesAndGivesTrueAgain) {
    queues.Push(17, sample("other"_q), true);

    EXPECT_TRUE(queues.Push(17, sample(), true));

    EXPECT_EQ(inRedis("17"), QVariant(QByteArray(sampleJson)));
    EXPECT_THAT(database.documents("dl_queues"), ElementsAre(canonical(sampleDocument)));
}

TEST_F(DownlinkQueue, PushWithoutPersistingLeavesTheDurableCopyAsItWas) {
    queues.Push(17, sample(), true);
    queues.Push(17, {}, false);

    EXPECT_THAT(database.documents("dl_queues"), ElementsAre(canonical(sampleDocument)));
    EXPECT_EQ(queues.Pull(17), dl_queues{});
}

TEST_F(DownlinkQueue, PushReplacesAKeyOfAnyType) {
    server.run({"RPUSH", "17", "x"}, 7);
    queues.Push(17, sample(), false);

    EXPECT_EQ(inRedis("17"), QVariant(QByteArray(sampleJson)));
}

TEST_F(DownlinkQueue, PullSendsOneGet) {
    queues.Pull(17);

    EXPECT_THAT(sent(), ElementsAre(QList<QByteArray>{"GET", "17"}));
}

TEST_F(DownlinkQueue, PullGivesWhatWasPushed) {
    queues.Push(17, sample(), false);

    EXPECT_EQ(queues.Pull(17), sample());
}

TEST_F(DownlinkQueue, PullAsksRedisEachTime) {
    queues.Push(17, sample(), false);
    queues.Pull(17);
    server.run({"SET", "17", R"({"status":"DONE"})"}, 7);

    EXPECT_EQ(queues.Pull(17).status, queue_status::DONE);
    EXPECT_TRUE(queues.Pull(17).dl.isEmpty());
}

TEST_F(DownlinkQueue, PullOfADeviceThatIsNowhereGivesTheEmptyRecord) {
    EXPECT_EQ(queues.Pull(17), dl_queues{});
}

TEST_F(DownlinkQueue, PullOfAKeyThatIsNotInRedisGivesTheDurableCopy) {
    queues.Push(17, sample(), true);
    server.run({"DEL", "17"}, 7);

    EXPECT_EQ(queues.Pull(17), sample());
}

TEST_F(DownlinkQueue, PullDoesNotPutTheDurableCopyBackIntoRedis) {
    database.insert("dl_queues", sampleDocument);

    EXPECT_EQ(queues.Pull(17), sample());
    EXPECT_EQ(server.run({"DBSIZE"}, 7), QVariant(0));
}

TEST_F(DownlinkQueue, PullReadsWholeNumbersOfTheDurableCopyWhateverTheirType) {
    database.insert("dl_queues",
                    R"({"_id": 17, "state": {"dl": {"q1": {"repeat": 1, "timeout": 2.0,
                        "start_from": {"$numberLong": "3"}}}}})");

    const auto queue = queues.Pull(17).dl.value("q1"_q);
    EXPECT_EQ(queue.repeat, 1);
    EXPECT_EQ(queue.timeout, 2);
    EXPECT_EQ(queue.start_from, 3);
}

// Nulls have no place in a durable copy.
TEST_F(DownlinkQueue, NullsInTheDataComeBackFromRedisAndNotFromMongo) {
    dl_queues pushed;
    pushed.dl["q1"_q].elements["e7"_q].data = QJsonObject{{"a"_q, QJsonValue::Null}, {"b"_q, 1}};
    queues.Push(17, pushed, true);
    EXPECT_EQ(queues.Pull(17), pushed);

    server.run({"DEL", "17"}, 7);
    EXPECT_EQ(queues.Pull(17).dl["q1"_q].elements["e7"_q].data, (QJsonObject{{"b"_q, 1}}));
}

TEST_F(DownlinkQueue, PullPrefersRedisToMongo) {
    database.insert("dl_queues", sampleDocument);
    server.run({"SET", "17", R"({"status":"DONE"})"}, 7);

    dl_queues expected;
    expected.status = queue_status::DONE;
    EXPECT_EQ(queues.Pull(17), expected);
}

TEST_F(DownlinkQueue, PullOfAKeyOfAnotherTypeGivesTheDurableCopy) {
    database.insert("dl_queues", sampleDocument);
    server.run({"HSET", "17", "dl", "{}"}, 7);

    EXPECT_EQ(queues.Pull(17), sample());
}

TEST_F(DownlinkQueue, PullOfADocumentWithoutAnObjectGivesTheEmptyRecord) {
    database.insert("dl_queues", R"({"_id": 17, "state": 5})");

    EXPECT_EQ(queues.Pull(17), dl_queues{});
}

class MalformedQueues : public DownlinkQueue, public testing::WithParamInterface<const char*> {};

// What is there is taken, also when it says nothing: MongoDB is not asked.
TEST_P(MalformedQueues, InRedisAreTheEmptyRecord) {
    database.insert("dl_queues", sampleDocument);
    server.run({"SET", "17", GetParam()}, 7);

    EXPECT_EQ(queues.Pull(17), dl_queues{});
}

INSTANTIATE_TEST_SUITE_P(Text, MalformedQueues,
                         testing::Values("", "no json", "[]", "5", "null", "{", "{}",
                                         R"({"dl":{"q1":{}},})", R"({"dl":5,"lock":"x"})"));

TEST_F(DownlinkQueue, DeleteSendsOneDelAndRemovesBothCopies) {
    queues.Push(17, sample(), true);
    queues.Push(18, {}, true);
    proxy.forget();

    EXPECT_TRUE(queues.Delete(17));

    EXPECT_THAT(proxy.sent(), ElementsAre(QList<QByteArray>{"DEL", "17"}));
    EXPECT_EQ(server.run({"KEYS", "*"}, 7), QVariant(QVariantList{"18"_qba}));
    EXPECT_EQ(database.count("dl_queues", R"({"_id": 17})"), 0);
    EXPECT_EQ(database.count("dl_queues"), 1);
    EXPECT_EQ(queues.Pull(17), dl_queues{});
}

TEST_F(DownlinkQueue, DeleteOfAnUnknownDeviceGivesTrue) {
    EXPECT_TRUE(queues.Delete(17));
}

TEST_F(DownlinkQueue, DeleteRemovesADurableCopyThatIsNotInRedis) {
    database.insert("dl_queues", sampleDocument);
    queues.Delete(17);

    EXPECT_EQ(database.count("dl_queues"), 0);
}

TEST_F(DownlinkQueue, DeleteDevicesDeletesInTheOrderOfTheList) {
    for (const int id : {1, 2, 3}) {
        queues.Push(id, {}, true);
    }
    proxy.forget();

    EXPECT_TRUE(queues.DeleteDevices({3, 1, 9, 3}));

    EXPECT_THAT(proxy.sent(),
                ElementsAre(QList<QByteArray>{"DEL", "3"}, QList<QByteArray>{"DEL", "1"},
                            QList<QByteArray>{"DEL", "9"}, QList<QByteArray>{"DEL", "3"}));
    EXPECT_EQ(server.run({"KEYS", "*"}, 7), QVariant(QVariantList{"2"_qba}));
    EXPECT_EQ(database.count("dl_queues", R"({"_id": 2})"), 1);
    EXPECT_EQ(database.count("dl_queues"), 1);
}

TEST_F(DownlinkQueue, DeleteDevicesOfNoneGivesTrueAndSendsNothing) {
    EXPECT_TRUE(queues.DeleteDevices({}));
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(DownlinkQueue, DeleteDevicesCallsTheOverriddenDelete) {
    struct : redis::dl_queue {
        using dl_queue::dl_queue;
        bool Delete(int modem_id) override {
            deleted.append(modem_id);
            return false;
        }
        QList<int> deleted;
    } overriding{conf(), mongoUrl()};

    EXPECT_TRUE(overriding.DeleteDevices({3, 1, 3}));

    EXPECT_EQ(overriding.deleted, (QList<int>{3, 1, 3}));
    EXPECT_THAT(sent(), IsEmpty());
}

TEST_F(DownlinkQueue, KeyIsTheDecimalNumberOfTheDevice) {
    for (const int id : {0, -1, 2147483647, -2147483647 - 1}) {
        queues.Push(id, sample(QString::number(id)), false);

        EXPECT_EQ(server.run({"EXISTS", QByteArray::number(id)}, 7), QVariant(1)) << id;
        EXPECT_EQ(queues.Pull(id), sample(QString::number(id)));
    }
    EXPECT_EQ(server.run({"DBSIZE"}, 7), QVariant(4));
}

TEST_F(DownlinkQueue, NamesMayBeAnyText) {
    dl_queues pushed;
    for (const QString& name : {""_q, "\u0416\U0001F50C"_q, "a b\n\"\\"_q, "17"_q}) {
        pushed.dl[name].elements["e-"_q + name].type = name;
    }
    queues.Push(17, pushed, false);

    EXPECT_EQ(queues.Pull(17), pushed);
    EXPECT_TRUE(inRedis("17").toByteArray().contains("\xd0\x96\xf0\x9f\x94\x8c"));
}

// The MongoDB driver sends no update that has an empty name in it.
TEST_F(DownlinkQueue, EmptyNameIsKeptInRedisAndThrowsWhenPersisted) {
    dl_queues pushed;
    pushed.dl.insert(QString(), {});

    EXPECT_THROW(queues.Push(17, pushed, true), mongocxx::v1::exception);

    EXPECT_EQ(queues.Pull(17), pushed);
    EXPECT_EQ(database.count("dl_queues"), 0);
}

// Deliberate: a queue's settings overwrite an element of the same name.
TEST_F(DownlinkQueue, ElementNamedLikeASettingDoesNotComeBack) {
    dl_queues pushed = sample();
    pushed.dl["q1"_q].elements.insert("repeat"_q, {});
    queues.Push(17, pushed, true);

    EXPECT_EQ(queues.Pull(17), sample());
}

TEST_F(DownlinkQueue, StatusWithoutANameComesBackAsNone) {
    dl_queues pushed;
    pushed.status = queue_status{9};
    queues.Push(17, pushed, false);

    EXPECT_EQ(inRedis("17"), QVariant(R"({"dl":{},"lock":false,"status":""})"_qba));
    EXPECT_EQ(queues.Pull(17).status, queue_status::NONE);
}

TEST_F(DownlinkQueue, AMebibyteOfElementsComesBackFromEitherCopy) {
    dl_queues pushed;
    for (int i = 0; i < 1024; ++i) {
        auto& element =
            pushed.dl["q-"_q + QString::number(i % 8)].elements["e-"_q + QString::number(i)];
        element.type = QString(1024, QChar(u'x'));
        element.repeat = i;
    }
    queues.Push(17, pushed, true);
    EXPECT_GT(server.run({"STRLEN", "17"}, 7).toInt(), 1 << 20);

    EXPECT_EQ(queues.Pull(17), pushed);
    server.run({"DEL", "17"}, 7);
    EXPECT_EQ(queues.Pull(17), pushed);
}

TEST_F(DownlinkQueue, PullsTheDurableCopyAfterAnyOtherReply) {
    database.insert("dl_queues", sampleDocument);
    for (const char* reply : {"-ERR no\r\n", "$-1\r\n", ":5\r\n", "*1\r\n$2\r\n{}\r\n"}) {
        test_support::ScriptedReplies peer{{reply}};
        redis_conf conf = redis_conf_from_json({});
        conf.port = peer.port();

        EXPECT_EQ((redis::dl_queue{conf, mongoUrl()}.Pull(17)), sample()) << reply;
    }
}

TEST_F(DownlinkQueue, PasswordIsGiven) {
    server.setPassword("secret");
    redis_conf conf = this->conf();
    conf.auth = "secret"_q;
    redis::dl_queue queues{conf, mongoUrl()};
    queues.Push(17, sample(), false);

    EXPECT_EQ(inRedis("17"), QVariant(QByteArray(sampleJson)));
}

TEST_F(DownlinkQueue, OtherDatabaseIsUsedByEveryCommand) {
    redis_conf conf = this->conf();
    conf.queue_db = 4;
    redis::dl_queue queues{conf, mongoUrl()};
    server.run({"SET", "17", sampleJson}, 4);

    EXPECT_EQ(queues.Pull(17), sample());
    queues.Push(18, sample(), false);
    EXPECT_EQ(inRedis("18", 4), QVariant(QByteArray(sampleJson)));
    queues.Delete(17);
    EXPECT_EQ(server.run({"KEYS", "*"}, 4), QVariant(QVariantList{"18"_qba}));
    EXPECT_EQ(server.run({"DBSIZE"}, 7), QVariant(0));
}

TEST_F(DownlinkQueue, UnreachableRedisShowsAtTheFirstCommand) {
    redis_conf conf = redis_conf_from_json({});
    conf.port = test_support::TestSocket::unusedPort();
    redis::dl_queue queues{conf, mongoUrl()};

    EXPECT_THROW(queues.Pull(17), RedisClient::Connection::Exception);
    EXPECT_THROW(queues.Push(17, sample(), true), RedisClient::Connection::Exception);
    EXPECT_EQ(database.count("dl_queues"), 0);
}

TEST_F(DownlinkQueue, UnreachableMongoIsRefused) {
    EXPECT_THROW((redis::dl_queue{conf(), test_support::unreachableMongoUrl()}),
                 mongocxx::v1::exception);
}

} // namespace
