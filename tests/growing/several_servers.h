#pragma once

#include "tests/growing/haproxy.h"
#include "tests/growing/sentinel.h"
#include "tests/support/mongo_server.h"
#include "tests/support/postgresql_server.h"
#include "tests/support/redis_server.h"

#include <QJsonObject>

#include <array>
#include <memory>
#include <string>

namespace growing {

/// Two FerretDBs over one PostgreSQL, and a Redis primary with a replica and three Sentinels, all
/// behind HAProxy. They wait for their disks, as those of a machine that keeps somebody's data.
class SeveralServers {
public:
    SeveralServers();

    test_support::MongoServer& ferretdb(std::size_t index) { return *m_ferretdb.at(index); }
    /// 0 is the primary at first.
    test_support::RedisServer& redis(std::size_t index) { return *m_redis.at(index); }

    Sentinel& sentinel(std::size_t index) { return *m_sentinels.at(index); }

    /// Most of the Sentinels take it for the primary, and so does it itself.
    bool isPrimary(std::size_t index);
    /// Is a replica of the other one, and follows it. Also false when it cannot be asked, as while
    /// it becomes one.
    bool isReplica(std::size_t index);

    /// While the roles are those of the beginning.
    bool nobodyWritesAndReplicaHasAll();

    const Haproxy& haproxy() const { return *m_haproxy; }
    /// Of HAProxy.
    std::string mongoUrl() const;
    int redisPort() const { return m_haproxy->redisPort(); }
    /// For the plug-in: HAProxy.
    QJsonObject settings() const;

private:
    test_support::PostgresqlServer m_postgresql{test_support::Durability::Complete};
    std::array<std::unique_ptr<test_support::MongoServer>, 2> m_ferretdb;
    std::array<std::unique_ptr<test_support::RedisServer>, 2> m_redis;
    std::array<std::unique_ptr<Sentinel>, 3> m_sentinels;
    std::unique_ptr<Haproxy> m_haproxy;
};

} // namespace growing
