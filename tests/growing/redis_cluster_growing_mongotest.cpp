#include "host/plugin_file.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_state.h"
#include "tests/growing/await.h"
#include "tests/support/mongo_database.h"
#include "tests/support/mongo_server.h"
#include "tests/support/postgresql_server.h"
#include "tests/support/qt_literals.h"
#include "tests/support/redis_server.h"

#include <QJsonObject>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

// Redis Cluster is nothing for this driver: it has one database, and sends clients from one server
// to the other.

namespace growing {

namespace {

using namespace test_support;
using namespace test_support::literals;
using testing::HasSubstr;
using testing::ThrowsMessage;

class RedisCluster : public testing::Test {
protected:
    RedisCluster() {
        needMongoInstance();
        server.run({"CLUSTER", "ADDSLOTSRANGE", "0", "8191"});
        other.run({"CLUSTER", "ADDSLOTSRANGE", "8192", "16383"});
        server.run({"CLUSTER", "MEET", "127.0.0.1", QByteArray::number(other.port())});
        await([this] { return info(server).contains("cluster_state:ok"); }, "the cluster");
        states = plugin.factory().CreateDriverStateInst(settings, nullptr);
        states->SetPrefix("grow"_q);
    }

    static QByteArray info(RedisServer& redis) {
        return redis.run({"CLUSTER", "INFO"}).toByteArray();
    }

    /// The first device whose key belongs to the server, or to the other one.
    int device(bool toServer) {
        for (int device = 1;; ++device) {
            const QByteArray key = "grow:" + QByteArray::number(device);
            if ((server.run({"CLUSTER", "KEYSLOT", key}).toInt() < 8192) == toServer) {
                return device;
            }
        }
    }

    PostgresqlServer storage;
    MongoServer mongo{storage};
    RedisServer server{{"--cluster-enabled"_q, "yes"_q}};
    RedisServer other{{"--cluster-enabled"_q, "yes"_q}};
    host::PluginFile plugin{QStringLiteral(KELVRO_PLUGIN_FILE)};
    QJsonObject settings{{"url"_q, QString::fromStdString(mongo.url())},
                         {"redis"_q, QJsonObject{{"port"_q, server.port()}}}};
    std::shared_ptr<interfaces::IDriverState> states;
};

TEST_F(RedisCluster, HasNoDatabaseForQueuesAndClients) {
    EXPECT_THAT([this] { states->DLqueue()->Push(1, {}, false); },
                ThrowsMessage<std::exception>(HasSubstr("database 7 cannot be selected")));
    EXPECT_THAT([this] { plugin.factory().CreateClientDatabaseInst(settings, nullptr); },
                ThrowsMessage<std::exception>(HasSubstr("database 2 cannot be selected")));
}

TEST_F(RedisCluster, LosesStatesThatBelongToAnotherServerWithoutAWord) {
    for (const bool belongsHere : {true, false}) {
        const int number = device(belongsHere);
        states->SetValue(number, "call"_q, 1);
        EXPECT_TRUE(states->Push(number, false));
        states->Pull(number);
        EXPECT_EQ(states->GetAll(number).contains("call"_q), belongsHere);
    }
}

} // namespace

} // namespace growing
