#include "redis/redis_conf.h"

redis_conf redis_conf_from_json(const QJsonObject& settings) {
    const auto text = [&](QLatin1String key, const QString& fallback = QString()) {
        return settings.value(key).toString(fallback);
    };
    const auto number = [&](QLatin1String key, int fallback) {
        return settings.value(key).toInt(fallback);
    };

    redis_conf conf;
    conf.host = text(QLatin1String("host"), QStringLiteral("127.0.0.1"));
    conf.auth = text(QLatin1String("auth"));
    conf.name = text(QLatin1String("name"));
    conf.port = number(QLatin1String("port"), 6379);
    // Deliberate: the key is spelled so; hosts' settings files rely on it.
    conf.client_db = number(QLatin1String("cleint_db"), 2);
    conf.state_db = number(QLatin1String("state_db"), 0);
    conf.queue_db = number(QLatin1String("queue_db"), 7);
    return conf;
}
