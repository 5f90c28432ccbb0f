#pragma once

#include "host/demo/redis_side.h"
#include "host/input/settings.h"
#include "redisclient/redisclient.h"

#include <QByteArray>
#include <QList>
#include <QVariant>

namespace host {

/// The keys in the Redis server of the plug-in's settings.
///
/// Throws Failure if the server refuses a command; the Redis client's exceptions pass through.
class RedisKeys final : public RedisSide {
public:
    /// Connects with the first command.
    explicit RedisKeys(const RedisSettings& settings);

    bool loseState(const QString& prefix, int device) override;
    bool loseQueues(int device) override;
    void enter(const DeviceEntry& entry) override;
    void strike(int device) override;

private:
    QVariant run(const QList<QByteArray>& command, int db);

    RedisSettings m_settings;
    RedisClient::Connection m_connection;
};

} // namespace host
