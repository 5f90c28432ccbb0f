#pragma once

#include "tests/support/mongo_server.h"
#include "tests/support/postgresql_server.h"
#include "tests/support/redis_server.h"

#include <QJsonObject>

#include <string>
#include <vector>

namespace soak {

/// What can be killed by itself.
enum class Side { Redis, Ferretdb, Postgresql };

constexpr const char* nameOf(Side side) {
    switch (side) {
    case Side::Redis:
        return "redis";
    case Side::Ferretdb:
        return "ferretdb";
    case Side::Postgresql:
        return "postgresql";
    }
    return "";
}

struct ServerOptions {
    /// Other people's keys in Redis, which it has to read back at every start.
    int otherKeys = 100'000;
    /// Off, Redis forgets what it had when it is killed: to see that this is found out.
    bool redisKeepsData = true;
    /// Of the MongoDB connection string; by default the host's time-outs.
    std::string urlOptions{};
};

/// The servers of a run, durable as those of a machine that keeps somebody's data: what they say to
/// have stored is on the disk.
class Servers {
public:
    explicit Servers(const ServerOptions& options);

    void kill(Side side);
    /// On the same port; returns when it serves.
    void start(Side side);

    /// For the plug-in.
    QJsonObject settings() const;

private:
    test_support::RedisServer m_redis;
    test_support::PostgresqlServer m_postgresql{test_support::Durability::Complete};
    test_support::MongoServer m_ferretdb;
};

} // namespace soak
