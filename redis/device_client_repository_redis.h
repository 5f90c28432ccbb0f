#pragma once

#include "interfaces/idevice_clients_repository.h"
#include "redisclient/redisclient.h"

namespace redis {

/// Reads a device's clients (the set "dev:clients:" + device number) and properties (the hash
/// "dev:properties:" + device number) from Redis. Writes nothing: the keys are filled elsewhere.
///
/// Borrows the connection. One thread at a time. Every operation blocks, one request per value.
/// A reply with which the server refuses the command counts as an empty one; the client library's
/// exceptions (no server, one that does not serve now, no such database) pass through unchanged.
class DeviceClientRepositoryRedis final : public interfaces::IDeviceClientsRepository {
public:
    /// Connects and tries the database out. Throws what a command throws when there is no
    /// connection.
    DeviceClientRepositoryRedis(RedisClient::Connection& connection, int db);

    std::list<QString> GetDeviceClients(int modem_id) override;
    std::pair<QString, QString> GetDeviceInfo(int modem_id) override;

private:
    RedisClient::Connection& m_connection;
    int m_db;
};

} // namespace redis
