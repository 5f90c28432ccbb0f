#pragma once

#include "host/input/settings.h"
#include "redisclient/redisclient.h"

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QVariant>

#include <functional>
#include <optional>
#include <vector>

namespace host {

/// One of the databases of the Redis server that the settings name, and what the plug-in keeps
/// there.
struct RedisRole {
    /// "state", "queue" or "client".
    QString name;
    /// What its keys are, for people.
    QString holds;
    /// Its key in the settings.
    QString setting;
    int db = 0;
};

/// In a fixed order; two roles may have the same database.
std::vector<RedisRole> redisRoles(const RedisSettings& settings);

/// The Redis server of the plug-in's settings, asked past the plug-in: for what the interfaces
/// cannot say.
///
/// Connects with the first command. Every command blocks; the Redis client's exceptions pass
/// through.
class DirectRedis {
public:
    explicit DirectRedis(const QJsonObject& settings);

    /// For messages: HOST:PORT.
    const QString& name() const { return m_name; }

    /// The answer, invalid if there is no such thing; nothing if the server refuses the command, be
    /// it that it does not know it or that it does not let this user.
    std::optional<QVariant> ask(const QList<QByteArray>& command, int db = 0);

    /// The answer; throws Failure if the server refuses the command.
    QVariant run(const QList<QByteArray>& command, int db = 0);

    /// Hands over each key, some perhaps twice, until `each` gives false. Throws as run().
    void scan(int db, const std::function<bool(const QByteArray&)>& each);

private:
    QString m_name;
    RedisClient::Connection m_connection;
};

} // namespace host
