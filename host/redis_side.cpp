#include "host/redis_side.h"

#include "host/failure.h"

namespace host {

namespace {

RedisClient::ConnectionConfig connectionConfig(const QJsonObject& redis) {
    return RedisClient::ConnectionConfig(
        redis.value(QLatin1String("host")).toString(QStringLiteral("127.0.0.1")),
        redis.value(QLatin1String("auth")).toString(),
        redis.value(QLatin1String("port")).toInt(RedisClient::ConnectionConfig::defaultPort),
        redis.value(QLatin1String("name")).toString());
}

QByteArray clientsKey(int device) {
    return "dev:clients:" + QByteArray::number(device);
}

QByteArray propertiesKey(int device) {
    return "dev:properties:" + QByteArray::number(device);
}

} // namespace

RedisServer::RedisServer(const QJsonObject& settings)
    : m_connection(connectionConfig(settings.value(QLatin1String("redis")).toObject())) {
    const auto redis = settings.value(QLatin1String("redis")).toObject();
    m_stateDb = redis.value(QLatin1String("state_db")).toInt(0);
    m_queueDb = redis.value(QLatin1String("queue_db")).toInt(7);
    // The key is spelled so.
    m_clientDb = redis.value(QLatin1String("cleint_db")).toInt(2);
}

bool RedisServer::loseState(const QString& prefix, int device) {
    const QByteArray key = prefix.toUtf8() + ':' + QByteArray::number(device);
    return run({"DEL", key}, m_stateDb).toInt() == 1;
}

bool RedisServer::loseQueues(int device) {
    return run({"DEL", QByteArray::number(device)}, m_queueDb).toInt() == 1;
}

void RedisServer::enter(const DeviceEntry& entry) {
    QList<QByteArray> command{"SADD", clientsKey(entry.modem_id)};
    for (const auto& client : entry.clients) {
        command.append(client.toUtf8());
    }
    run(command, m_clientDb);
    run({"HSET", propertiesKey(entry.modem_id), "protocol", entry.protocol.toUtf8(), "hw_type",
         entry.hw_type.toUtf8()},
        m_clientDb);
}

void RedisServer::strike(int device) {
    run({"DEL", clientsKey(device), propertiesKey(device)}, m_clientDb);
}

QVariant RedisServer::run(const QList<QByteArray>& command, int db) {
    const auto response = m_connection.commandSync(command, db);
    if (response.isErrorMessage()) {
        throw Failure(QStringLiteral("the Redis server refuses %1 in database %2")
                          .arg(QString::fromLatin1(command.front()))
                          .arg(db));
    }
    return response.getValue();
}

} // namespace host
