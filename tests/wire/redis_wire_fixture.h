#pragma once

#include "tests/wire/redis_stores.h"
#include "tests/wire/wire_faults.h"

#include "tests/support/mongo_database.h"
#include "tests/support/mongo_wire.h"
#include "tests/support/open_descriptors.h"
#include "tests/support/redis_server.h"
#include "tests/support/redis_wire.h"
#include "tests/support/system_calls.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

/// A proxy before a Redis server with a password, another before the MongoDB server, and the means
/// to see what came of a call through them. Waiting in vain takes no time here, as far as the code
/// under test can tell it takes all of it.
class RedisWireTest : public testing::Test {
protected:
    // What the client has without being told, as hosts have no setting for it.
    static constexpr std::chrono::seconds connectTimeout{5};
    static constexpr std::chrono::seconds commandTimeout{60};
    /// What a loaded machine may add to a time-out.
    static constexpr std::chrono::seconds slack{10};
    static constexpr const char* secret = "not-to-be-told";

    static void SetUpTestSuite() {
        shared = std::make_unique<Servers>();
        shared->redis.setPassword(secret);
    }
    static void TearDownTestSuite() { shared.reset(); }

    RedisWireTest() { std::signal(SIGPIPE, SIG_DFL); }

    redis_conf conf() const {
        redis_conf conf = redis_conf_from_json({});
        conf.port = redis.port();
        conf.auth = QString::fromLatin1(secret);
        conf.name = QStringLiteral("driver");
        return conf;
    }

    std::unique_ptr<RedisStore> made(const RedisKind& kind) const {
        return kind.make(conf(), mongo.url() + "&connectTimeoutMS=2000&socketTimeoutMS=3000");
    }

    static test_support::RedisServer& server() { return shared->redis; }
    static test_support::mongo_database& database() { return shared->database(); }

    void fill(const RedisKind& kind, int number) const {
        server().run(kind.fill(kind.key(device), number), kind.db);
    }
    /// The number that is there, for those that are written; 0 without one.
    int inRedis(const RedisKind& kind) const {
        const QByteArray json = server().run({"GET", kind.key(device)}, kind.db).toByteArray();
        QJsonValue value =
            QJsonObject{{QStringLiteral("state"), QJsonDocument::fromJson(json).object()}};
        for (const QString& part : QString::fromStdString(kind.path).split(u'.')) {
            value = value.toObject().value(part);
        }
        return value.toInt();
    }
    /// Whether the durable copy has that number; 0 is that there is none.
    bool isDurable(const RedisKind& kind, int number) const {
        const std::string id = "{\"_id\": " + std::to_string(device);
        return number == 0 ? database().count(kind.collection, id + "}") == 0
                           : database().count(kind.collection, id + ", \"" + kind.path +
                                                                   "\": " + std::to_string(number) +
                                                                   "}") == 1;
    }
    static int timesWritten() { return server().callsOf("set"); }

    /// One that no other test has.
    const int device = nextDevice();

private:
    /// The driver's fixed database, dropped before and after all tests.
    class FixedDatabase : public test_support::FixedMongoDatabase {
    public:
        test_support::mongo_database& get() { return database; }
        void TestBody() override {}
    };
    struct Servers {
        test_support::RedisServer redis;
        FixedDatabase mongo;
        test_support::mongo_database& database() { return mongo.get(); }
    };

    static int nextDevice() {
        static int last = 0;
        server().run({"PING"}); // connected before descriptors are counted
        return ++last;
    }

    static inline std::unique_ptr<Servers> shared;
    test_support::DescriptorsAsBefore m_descriptors;

protected:
    test_support::RedisProxy redis{server().port()};
    test_support::MongoProxy mongo;

private:
    test_support::SkippedWaits m_waits{
        [this](int port) { return redis.isStalling(port) || mongo.isStalling(port); }};
};
