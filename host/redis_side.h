#pragma once

#include "host/device_records.h"
#include "redisclient/redisclient.h"

#include <QJsonObject>
#include <QString>

namespace host {

/// What happens to Redis past the plug-in: keys get lost, and somebody else fills the registry of
/// the devices' clients. Every operation blocks on the server.
class RedisSide {
public:
    virtual ~RedisSide() = default;

    /// Delete a key that the plug-in has written. True if it was there.
    virtual bool loseState(const QString& prefix, int device) = 0;
    virtual bool loseQueues(int device) = 0;

    /// Writes and deletes what the registry knows of a device.
    virtual void enter(const DeviceEntry& entry) = 0;
    virtual void strike(int device) = 0;
};

/// The Redis server of the plug-in's settings.
///
/// Throws Failure if the server refuses a command; the Redis client's exceptions pass through.
class RedisServer final : public RedisSide {
public:
    /// `settings` are the plug-in's; their "redis" object is read with the plug-in's defaults.
    /// Connects with the first command.
    explicit RedisServer(const QJsonObject& settings);

    bool loseState(const QString& prefix, int device) override;
    bool loseQueues(int device) override;
    void enter(const DeviceEntry& entry) override;
    void strike(int device) override;

private:
    QVariant run(const QList<QByteArray>& command, int db);

    RedisClient::Connection m_connection;
    int m_stateDb = 0;
    int m_queueDb = 0;
    int m_clientDb = 0;
};

} // namespace host
