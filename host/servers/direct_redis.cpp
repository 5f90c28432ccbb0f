#include "host/servers/direct_redis.h"

#include "host/failure.h"

#include <QVariantList>

namespace host {

std::vector<RedisRole> redisRoles(const RedisSettings& settings) {
    return {
        {.name = QStringLiteral("state"),
         .holds = QStringLiteral("driver states"),
         .setting = QStringLiteral("state_db"),
         .db = settings.stateDb},
        {.name = QStringLiteral("queue"),
         .holds = QStringLiteral("downlink queues"),
         .setting = QStringLiteral("queue_db"),
         .db = settings.queueDb},
        // The setting is spelled so.
        {.name = QStringLiteral("client"),
         .holds = QStringLiteral("client registry"),
         .setting = QStringLiteral("cleint_db"),
         .db = settings.clientDb},
    };
}

DirectRedis::DirectRedis(const QJsonObject& settings)
    : m_name(redisName(settings)), m_connection([&] {
          const auto redis = redisSettings(settings);
          return RedisClient::ConnectionConfig(redis.host, redis.auth, redis.port, redis.name);
      }()) {}

std::optional<QVariant> DirectRedis::ask(const QList<QByteArray>& command, int db) {
    const auto response = m_connection.commandSync(command, db);
    if (response.isErrorMessage()) {
        return {};
    }
    return response.getValue();
}

QVariant DirectRedis::run(const QList<QByteArray>& command, int db) {
    const auto answer = ask(command, db);
    if (!answer) {
        throw Failure(QStringLiteral("the Redis server %1 refuses %2 in database %3")
                          .arg(m_name, QString::fromLatin1(command.front()))
                          .arg(db));
    }
    return *answer;
}

void DirectRedis::scan(int db, const std::function<bool(const QByteArray&)>& each) {
    QByteArray cursor("0");
    do {
        const auto answer = run({"SCAN", cursor, "COUNT", "1000"}, db).toList();
        cursor = answer.value(0).toByteArray();
        for (const auto& key : answer.value(1).toList()) {
            if (!each(key.toByteArray())) {
                return;
            }
        }
    } while (cursor != "0" && !cursor.isEmpty());
}

} // namespace host
