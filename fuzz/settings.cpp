// Any settings object given to the factory. No server is reached: the ports are none, and the URLs
// are no URLs.

#include "fuzz/support/json_of_choices.h"
#include "fuzz/support/target.h"
#include "plugin/db_driver_mongo_factory.h"
#include "redis/redis_conf.h"

#include <mongocxx/v1/exception.hpp>
#include <mongocxx/v1/instance.hpp>

#include <QJsonObject>

namespace {

void requireDefaults(const QJsonObject& json, const redis_conf& conf) {
    const auto text = [&](const char* key, const QString& value, const QString& otherwise) {
        const QJsonValue given = json.value(QLatin1String(key));
        fuzz::require(value == (given.isString() ? given.toString() : otherwise), key);
    };
    const auto number = [&](const char* key, int value, int otherwise) {
        const QJsonValue given = json.value(QLatin1String(key));
        const bool isInt = given.isDouble() && given.toDouble() == given.toInt();
        fuzz::require(value == (isInt ? given.toInt() : otherwise), key);
    };
    text("host", conf.host, QStringLiteral("127.0.0.1"));
    text("auth", conf.auth, QString());
    text("name", conf.name, QString());
    number("port", conf.port, 6379);
    number("cleint_db", conf.client_db, 2);
    number("state_db", conf.state_db, 0);
    number("queue_db", conf.queue_db, 7);
}

template <typename Create>
void mustThrow(const Create& create) {
    try {
        create();
    } catch (const mongocxx::v1::exception&) {
        return;
    } catch (const RedisClient::Connection::Exception&) {
        return;
    }
    fuzz::require(false, "there is neither such a server nor such a URL");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const mongocxx::v1::instance driver;
    static DbDriverMongoFactory factory;
    static const fuzz::json_names names{"redis", "url",       "host",     "auth",     "name",
                                        "port",  "cleint_db", "state_db", "queue_db", "client_db"};
    fuzz::choices choices{fuzz::textOf(data, size)};
    QJsonObject settings = fuzz::parsed(fuzz::anyText(choices, names));

    const QLatin1String redisKey("redis");
    const QLatin1String urlKey("url");
    requireDefaults(settings, redis_conf_from_json(settings));
    QJsonObject redis = settings.value(redisKey).toObject();
    const redis_conf conf = redis_conf_from_json(redis);
    requireDefaults(redis, conf);
    if (conf.port >= 1 && conf.port <= 65535) {
        redis.insert(QLatin1String("port"), conf.port - 65535);
        settings.insert(redisKey, redis);
    }
    if (const QString url = settings.value(urlKey).toString();
        url.startsWith(QLatin1String("mongodb"))) {
        settings.insert(urlKey, url.mid(1));
    }

    mustThrow([&] { factory.CreateMessageDatabaseInst(settings, nullptr); });
    mustThrow([&] { factory.CreateEavDatabaseInst(settings, nullptr); });
    mustThrow([&] { factory.CreateDriverStateInst(settings, nullptr); });
    mustThrow([&] { factory.CreateClientDatabaseInst(settings, nullptr); });
    return 0;
}
