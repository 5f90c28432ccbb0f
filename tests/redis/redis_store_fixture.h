#pragma once

#include "redis/redis_conf.h"

#include "tests/support/mongo_database.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/redis_server.h"
#include "tests/support/redis_wire.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

/// What went to a Redis server, command by command.
using redis_commands = std::vector<QList<QByteArray>>;

/// A Redis server of the test's own behind a recording proxy, and the driver's fixed database in
/// MongoDB.
///
/// `server.run` looks at what is in Redis, past the proxy and past the code under test; `database`
/// does so for MongoDB.
class RedisStoreTest : public test_support::FixedMongoDatabase {
protected:
    /// The databases are the defaults.
    redis_conf conf() const {
        redis_conf conf = redis_conf_from_json({});
        conf.port = proxy.port();
        return conf;
    }

    static QByteArray compact(const QJsonObject& json) {
        return QJsonDocument{json}.toJson(QJsonDocument::Compact);
    }

    test_support::RedisServer server;
    test_support::RedisProxy proxy{server.port()};
};
