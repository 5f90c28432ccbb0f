#pragma once

#include "interfaces/idevice_clients_database.h"
#include "redis/device_client_repository_redis.h"
#include "redis/redis_conf.h"
#include "redisclient/redisclient.h"

namespace redis {

/// The registry of the devices' clients: one Redis connection and the repository that reads
/// through it.
///
/// Owns both. One thread at a time.
class DeviceClientDatabaseRedis final : public interfaces::IDeviceClientsDatabase {
public:
    /// Connects. Throws what the repository's first command throws when there is no connection.
    explicit DeviceClientDatabaseRedis(const redis_conf& conf);

    /// The registry is filled elsewhere: there is nothing to lay out.
    void CreateDatabase() override {}
    void CommitTransaction() override {}
    void RollbackTransaction() override {}
    void BeginTransaction() override {}

    interfaces::IDeviceClientsRepository* DeviceClientsRepository() override;

private:
    RedisClient::Connection m_connection;
    DeviceClientRepositoryRedis m_repository;
};

} // namespace redis
