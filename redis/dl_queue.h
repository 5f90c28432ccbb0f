#pragma once

#include "interfaces/idriver_dl_queue.h"
#include "mongo/dl_queue_persistent.h"
#include "redis/redis_conf.h"
#include "redisclient/redisclient.h"

#include <string>

namespace redis {

/// The pending downlink queues of each device: JSON in Redis under the device number, with an
/// optional durable copy in MongoDB.
///
/// Owns its Redis connection and its durable store; keeps no cache, so every call goes to Redis.
/// One thread at a time. Every operation blocks. Replies that report an error are not examined; the
/// client libraries' exceptions pass through unchanged.
class dl_queue : public interfaces::IDriverDLqueue {
public:
    /// Connects to Redis (whether that works shows at the first command) and lays the durable store
    /// out. Throws mongocxx::v1::exception if `mongoUrl` is malformed or its server cannot be
    /// reached.
    dl_queue(const redis_conf& conf, const std::string& mongoUrl);

    model::dl_queues Pull(int modem_id) override;
    bool Push(int modem_id, const model::dl_queues& queues, bool persist) override;
    bool Delete(int modem_id) override;
    bool DeleteDevices(const QList<int>& modem_ids) override;

private:
    RedisClient::Connection m_connection;
    mongo::dl_queue_persistent m_persistent;
    int m_db;
};

} // namespace redis
