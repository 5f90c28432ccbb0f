#include "redis/device_client_database_redis.h"

namespace redis {

DeviceClientDatabaseRedis::DeviceClientDatabaseRedis(const redis_conf& conf)
    : m_connection(RedisClient::ConnectionConfig(conf.host, conf.auth, conf.port, conf.name)),
      m_repository(m_connection, conf.client_db) {}

interfaces::IDeviceClientsRepository* DeviceClientDatabaseRedis::DeviceClientsRepository() {
    return &m_repository;
}

} // namespace redis
