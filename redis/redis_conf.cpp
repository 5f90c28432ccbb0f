#include "redis/redis_conf.h"

RedisClient::Connection redis_conf::connection() const {
    return RedisClient::Connection(RedisClient::ConnectionConfig(host, auth, port, name));
}

redis_conf redis_conf_from_json(const QJsonObject& settings) {
    redis_conf conf;
    const auto read = [&](const char* key) { return settings.value(QLatin1String(key)); };
    conf.host = read("host").toString(conf.host);
    conf.auth = read("auth").toString();
    conf.name = read("name").toString();
    conf.port = read("port").toInt(conf.port);
    // Deliberate: the key is spelled so; hosts' settings files rely on it.
    conf.client_db = read("cleint_db").toInt(conf.client_db);
    conf.state_db = read("state_db").toInt(conf.state_db);
    conf.queue_db = read("queue_db").toInt(conf.queue_db);
    return conf;
}
