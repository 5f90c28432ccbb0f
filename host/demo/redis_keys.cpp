#include "host/demo/redis_keys.h"

#include "host/failure.h"

namespace host {

namespace {

QByteArray clientsKey(int device) {
    return "dev:clients:" + QByteArray::number(device);
}

QByteArray propertiesKey(int device) {
    return "dev:properties:" + QByteArray::number(device);
}

} // namespace

RedisKeys::RedisKeys(const RedisSettings& settings)
    : m_settings(settings), m_connection(RedisClient::ConnectionConfig(
                                settings.host, settings.auth, settings.port, settings.name)) {}

bool RedisKeys::loseState(const QString& prefix, int device) {
    const QByteArray key = prefix.toUtf8() + ':' + QByteArray::number(device);
    return run({"DEL", key}, m_settings.stateDb).toInt() == 1;
}

bool RedisKeys::loseQueues(int device) {
    return run({"DEL", QByteArray::number(device)}, m_settings.queueDb).toInt() == 1;
}

void RedisKeys::enter(const DeviceEntry& entry) {
    QList<QByteArray> command{"SADD", clientsKey(entry.modem_id)};
    for (const auto& client : entry.clients) {
        command.append(client.toUtf8());
    }
    run(command, m_settings.clientDb);
    run({"HSET", propertiesKey(entry.modem_id), "protocol", entry.protocol.toUtf8(), "hw_type",
         entry.hw_type.toUtf8()},
        m_settings.clientDb);
}

void RedisKeys::strike(int device) {
    run({"DEL", clientsKey(device), propertiesKey(device)}, m_settings.clientDb);
}

QVariant RedisKeys::run(const QList<QByteArray>& command, int db) {
    const auto response = m_connection.commandSync(command, db);
    if (response.isErrorMessage()) {
        throw Failure(QStringLiteral("the Redis server refuses %1 in database %2")
                          .arg(QString::fromLatin1(command.front()))
                          .arg(db));
    }
    return response.getValue();
}

} // namespace host
