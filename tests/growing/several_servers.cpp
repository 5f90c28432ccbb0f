#include "tests/growing/several_servers.h"

#include "host/input/mongo_timeouts.h"
#include "tests/growing/await.h"
#include "tests/support/qt_literals.h"

#include <algorithm>

namespace growing {

using namespace test_support;
using namespace test_support::literals;

namespace {

const QStringList durable{"--appendonly"_q, "yes"_q, "--appendfsync"_q, "always"_q};

QString address(int port) {
    return QStringLiteral("127.0.0.1:%1").arg(port);
}

} // namespace

SeveralServers::SeveralServers() {
    for (auto& ferretdb : m_ferretdb) {
        ferretdb = std::make_unique<MongoServer>(m_postgresql);
    }
    m_redis[0] = std::make_unique<RedisServer>(durable);
    const QStringList replica{"--replicaof"_q, "127.0.0.1"_q, QString::number(redis(0).port())};
    m_redis[1] = std::make_unique<RedisServer>(durable + replica);
    for (auto& sentinel : m_sentinels) {
        sentinel = std::make_unique<Sentinel>(redis(0).port());
    }
    m_haproxy = std::make_unique<Haproxy>(std::map<QString, QString>{
        {"KELVRO_FERRETDB_A"_q, address(ferretdb(0).port())},
        {"KELVRO_FERRETDB_B"_q, address(ferretdb(1).port())},
        {"KELVRO_REDIS_A_HOST"_q, "127.0.0.1"_q},
        {"KELVRO_REDIS_A_PORT"_q, QString::number(redis(0).port())},
        {"KELVRO_REDIS_B_HOST"_q, "127.0.0.1"_q},
        {"KELVRO_REDIS_B_PORT"_q, QString::number(redis(1).port())},
        {"KELVRO_SENTINEL_1"_q, address(m_sentinels[0]->port())},
        {"KELVRO_SENTINEL_2"_q, address(m_sentinels[1]->port())},
        {"KELVRO_SENTINEL_3"_q, address(m_sentinels[2]->port())},
    });
    await(
        [this] {
            return isReplica(1) && std::ranges::all_of(m_sentinels, [](const auto& sentinel) {
                       return sentinel->knows(3, 1);
                   });
        },
        "the Sentinels know everybody");
    await(
        [this] {
            RedisClient::Connection redis(
                RedisClient::ConnectionConfig("127.0.0.1"_q, QString(), redisPort()));
            return redis.connect() && m_haproxy->isUp("ferretdb", "a") &&
                   m_haproxy->isUp("ferretdb", "b");
        },
        "HAProxy leads to all of them");
}

bool SeveralServers::isPrimary(std::size_t index) {
    const int port = redis(index).port();
    const auto agreeing = std::ranges::count_if(
        m_sentinels, [port](const auto& sentinel) { return sentinel->primaryPort() == port; });
    return agreeing > 1 && redis(index).info("replication", "role:") == "master";
}

bool SeveralServers::isReplica(std::size_t index) {
    RedisServer& server = redis(index);
    const auto is = [&server](const char* field, const QByteArray& value) {
        return server.info("replication", field) == value;
    };
    try {
        return is("role:", "slave") &&
               is("master_port:", QByteArray::number(redis(1 - index).port())) &&
               is("master_link_status:", "up") && is("master_sync_in_progress:", "0");
    } catch (const RedisClient::Connection::Exception&) {
        return false;
    }
}

bool SeveralServers::nobodyWritesAndReplicaHasAll() {
    return m_haproxy->connectionsTo("redis-a", "a") == 0 &&
           redis(0).info("replication", "master_repl_offset:") ==
               redis(1).info("replication", "master_repl_offset:");
}

std::string SeveralServers::mongoUrl() const {
    return "mongodb://127.0.0.1:" + std::to_string(m_haproxy->mongoPort()) + "/";
}

QJsonObject SeveralServers::settings() const {
    return {{"url"_q, host::withTimeouts(QString::fromStdString(mongoUrl()))},
            {"redis"_q, QJsonObject{{"port"_q, redisPort()}}}};
}

} // namespace growing
