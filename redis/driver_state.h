#pragma once

#include "interfaces/idriver_state.h"
#include "mongo/driver_state_persistent.h"
#include "redis/dl_queue.h"
#include "redis/redis_conf.h"
#include "redisclient/redisclient.h"

#include <string>

namespace redis {

template <typename Durable>
struct device_json;

/// The key/value state of each device: a working copy in memory, JSON in Redis under
/// PREFIX:DEVICE, and an optional durable copy in MongoDB.
///
/// Values are read and written in memory only; Pull and Push move a device's object. The memory
/// only grows: no operation, Delete included, takes a device out of it.
///
/// Owns its Redis connection, the durable store and the downlink queues (which have a connection
/// and a store of their own). One thread at a time. Pull, Push, Delete, DeleteDevices, GetIDs and
/// GetAllStates block. Replies with which Redis refuses a command are not examined; the client
/// libraries' exceptions pass through unchanged, that of a Redis that is not there, does not serve
/// now or has no such database (RedisClient::Connection::Exception) before anything went to MongoDB
/// or changed in memory.
class DriverStateRedis : public interfaces::IDriverState {
public:
    /// Connects to Redis (whether that works shows at the first command) and lays the durable
    /// stores out. Throws mongocxx::v1::exception if `mongoUrl` is malformed or its server cannot
    /// be reached.
    DriverStateRedis(const redis_conf& conf, const std::string& mongoUrl);

    void SetPrefix(const QString& prefix) override;
    const QString& GetPrefix() override;

    bool Pull(int modem_id) override;
    bool Push(int modem_id, bool persist) override;
    bool Delete(int modem_id) override;

    std::variant<int, double, QByteArray> GetValue(int modem_id, const QString& name) override;

    /// Bytes become text: decoded as UTF-8 up to their first zero. Throws std::bad_variant_access
    /// if `value` is valueless.
    void SetValue(int modem_id, const QString& name,
                  const std::variant<int, double, QByteArray>& value) override;

    QVariant GetValueAsVariant(int modem_id, const QString& name) override;
    void SetValueAsVariant(int modem_id, const QString& name, const QVariant& value) override;
    QJsonObject GetAll(int modem_id) override;

    QList<QVariant> GetIDs(const QString& first, const QString& second) override;
    bool DeleteDevices(const QList<int>& modem_ids, const QDateTime& from,
                       const QDateTime& to) override;
    std::shared_ptr<QHash<int, QJsonObject>> GetAllStates(const QString& first,
                                                          const QString& second) override;
    interfaces::IDriverDLqueue* DLqueue() override;

private:
    device_json<mongo::driver_state_persistent> states();
    RedisClient::Response send(const QList<QByteArray>& command);
    QByteArray keyOf(int modem_id) const;

    RedisClient::Connection m_connection;
    dl_queue m_downlinkQueues;
    mongo::driver_state_persistent m_persistent;
    QHash<int, QJsonObject> m_states;
    QString m_prefix;
    QByteArray m_keyStart = ":"; ///< the prefix as it stands in the keys
    int m_db;
};

} // namespace redis
