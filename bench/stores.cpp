#include "bench/stores.h"

#include "host/input/settings.h"
#include "model/bson/bson_builder.h"
#include "mongo/store_layout.h"

#include <bsoncxx/v1/types/view.hpp>
#include <hiredis/hiredis.h>
#include <mongocxx/v1/uri.hpp>

#include <QRegularExpression>

#include <stdexcept>
#include <string>

namespace bench {

namespace {

QJsonObject settings() {
    if (!qEnvironmentVariableIsSet("REDIS_URL")) {
        // The default server's databases are not ours to empty.
        throw std::runtime_error("REDIS_URL is not set; ./dev bench starts servers and sets it");
    }
    auto settings = host::settingsFromEnvironment();
    auto redis = settings.value(QLatin1String("redis")).toObject();
    redis.insert(QStringLiteral("cleint_db"), Stores::clientDb);
    redis.insert(QStringLiteral("state_db"), Stores::stateDb);
    redis.insert(QStringLiteral("queue_db"), Stores::queueDb);
    settings.insert(QStringLiteral("redis"), redis);
    return settings;
}

mongocxx::v1::client mongoClient(const QJsonObject& settings) {
    const QString url = settings.value(QLatin1String("url")).toString();
    return mongocxx::v1::client{mongocxx::v1::uri(url.toStdString())};
}

void refuseForeignDocuments(mongocxx::v1::database database) {
    const bool allowed = qEnvironmentVariable("KELVRO_ALLOW_DROP") == QLatin1String("1");
    if (!allowed && !database.list_collection_names().empty()) {
        throw std::runtime_error(
            "the server of MONGODB_URL has a database \"kelvrostorage\" with collections in it, "
            "which the benchmarks would drop; KELVRO_ALLOW_DROP=1 allows that");
    }
}

void refuseForeignKeys(RawRedis& redis) {
    for (const int db : {Stores::clientDb, Stores::stateDb, Stores::queueDb}) {
        redis.select(db);
        if (redis.run({"DBSIZE"})->integer != 0) {
            throw std::runtime_error("database " + std::to_string(db) +
                                     " of the server of REDIS_URL has keys in it, which the "
                                     "benchmarks would delete");
        }
    }
}

} // namespace

Stores::Stores() : Stores(settings()) {}

Stores::Stores(const QJsonObject& settings)
    : m_client(mongoClient(settings)), m_measuredClient(mongoClient(settings)),
      m_redis(host::redisSettings(settings)), m_measuredRedis(host::redisSettings(settings)),
      m_plugin(qEnvironmentVariable("KELVROSTORAGE_PLUGIN")) {
    refuseForeignDocuments(database());
    refuseForeignKeys(m_redis);
    database().drop();
    auto& factory = m_plugin.factory();
    m_messages = factory.CreateMessageDatabaseInst(settings, nullptr);
    m_eav = factory.CreateEavDatabaseInst(settings, nullptr);
    m_driverState = factory.CreateDriverStateInst(settings, nullptr);
    m_clients = factory.CreateClientDatabaseInst(settings, nullptr);
}

Stores::~Stores() {
    try {
        database().drop();
        for (const int db : {clientDb, stateDb, queueDb}) {
            emptyRedis(db);
        }
    } catch (const std::exception& error) {
        std::fprintf(stderr, "cannot remove what the benchmarks stored: %s\n", error.what());
    }
}

mongocxx::v1::database Stores::database() {
    return m_client.database(mongo::databaseName);
}

RawRedis& Stores::rawRedis(int db) {
    m_measuredRedis.select(db);
    return m_measuredRedis;
}

RawCollectionPtr Stores::emptyCollection(std::string_view collection,
                                         std::span<const layout::index> indexes) {
    auto made = database().collection(collection);
    made.drop();
    mongo::createIndexes(made, indexes);
    return std::make_shared<RawCollection>(RawCollection{
        .measured = m_measuredClient.database(mongo::databaseName).collection(collection),
        .unmeasured = std::move(made)});
}

RawRedis& Stores::otherRedis(int db) {
    m_redis.select(db);
    return m_redis;
}

RawRedis& Stores::emptyRedis(int db) {
    otherRedis(db).run({"FLUSHDB"});
    return m_redis;
}

QJsonObject Stores::versions() {
    const auto text = [](const bsoncxx::v1::element::view& element) {
        const auto string = element.get_string().value;
        return QString::fromUtf8(string.data(), static_cast<int>(string.size()));
    };
    bson_utils::bson_builder command;
    command.appendInt32("buildInfo", 1);
    const auto info = database().run_command(command.take());
    QJsonObject versions{{QStringLiteral("MongoDB interface"), text(info["version"])}};
    if (const auto ferret = info["ferretdb"]) {
        versions.insert(QStringLiteral("FerretDB"), text(ferret.get_document().value["version"]));
    }
    const auto redis = m_redis.run({"INFO", "server"});
    const auto found = QRegularExpression(QStringLiteral("redis_version:([^\r\n]*)"))
                           .match(QString::fromLatin1(redis->str, static_cast<int>(redis->len)));
    versions.insert(QStringLiteral("Redis"), found.captured(1));
    return versions;
}

} // namespace bench
