#include "redis/device_client_database_redis.h"

namespace redis {

DeviceClientDatabaseRedis::DeviceClientDatabaseRedis(const redis_conf& conf)
    : m_connection(conf.connection()), m_repository(m_connection, conf.client_db) {}

interfaces::IDeviceClientsRepository* DeviceClientDatabaseRedis::DeviceClientsRepository() {
    return &m_repository;
}

} // namespace redis
