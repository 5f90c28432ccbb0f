#include "redis/device_client_repository_redis.h"

#include <QByteArray>
#include <QVariant>

namespace redis {

DeviceClientRepositoryRedis::DeviceClientRepositoryRedis(RedisClient::Connection& connection,
                                                         int db)
    : m_connection(connection), m_db(db) {
    m_connection.connect(true);
    // Deliberate: the empty argument makes Redis refuse the command, so nothing but the connection
    // and the choice of the database is exercised.
    m_connection.commandSync({"DBSIZE", ""}, m_db);
}

std::list<QString> DeviceClientRepositoryRedis::GetDeviceClients(int modem_id) {
    const QVariantList names =
        m_connection.commandSync({"SMEMBERS", "dev:clients:" + QByteArray::number(modem_id)}, m_db)
            .getValue()
            .toList();
    std::list<QString> clients;
    for (const QVariant& name : names) {
        clients.push_back(name.toString());
    }
    return clients;
}

std::pair<QString, QString> DeviceClientRepositoryRedis::GetDeviceInfo(int modem_id) {
    const QByteArray key = "dev:properties:" + QByteArray::number(modem_id);
    const QString hwType =
        m_connection.commandSync({"HGET", key, "hw_type"}, m_db).getValue().toString();
    const QString protocol =
        m_connection.commandSync({"HGET", key, "protocol"}, m_db).getValue().toString();
    return {protocol, hwType};
}

} // namespace redis
