#pragma once

#include "interfaces/idriver_dl_queue.h"
#include "mongo/dl_queue_persistent.h"
#include "redis/redis_conf.h"
#include "redisclient/redisclient.h"

#include <string>

namespace redis {

template <typename Durable>
struct device_json;

/// The pending downlink queues of each device: JSON in Redis under the device number, with an
/// optional durable copy in MongoDB.
///
/// Owns its Redis connection and its durable store; keeps no cache, so every call goes to Redis.
/// One thread at a time. Every operation blocks. Replies with which Redis refuses a command are not
/// examined; the client libraries' exceptions pass through unchanged, that of a Redis that is not
/// there, does not serve now or has no such database (RedisClient::Connection::Exception) before
/// anything went to MongoDB.
class dl_queue : public interfaces::IDriverDLqueue {
public:
    /// Connects to Redis (whether that works shows at the first command) and lays the durable store
    /// out. Throws mongocxx::v1::exception if `mongoUrl` is malformed or its server cannot be
    /// reached.
    dl_queue(const redis_conf& conf, const std::string& mongoUrl);

    model::dl_queues Pull(int modem_id) override;
    bool Push(int modem_id, const model::dl_queues& record, bool persist) override;
    bool Delete(int modem_id) override;
    bool DeleteDevices(const QList<int>& modem_ids) override;

private:
    device_json<mongo::dl_queue_persistent> queues();

    RedisClient::Connection m_connection;
    mongo::dl_queue_persistent m_persistent;
    int m_db;
};

} // namespace redis
