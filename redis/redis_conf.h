#pragma once

#include "redisclient/redisclient.h"

#include <QJsonObject>
#include <QString>

/// Settings of one Redis connection, with their defaults. No number is checked for its range: a
/// port or a database that the server does not have shows when it is used, and a negative database
/// means the one of the last command that was answered (at first 0).
struct redis_conf {
    QString host = QStringLiteral("127.0.0.1");
    /// Password; empty for none.
    QString auth;
    /// Connection name; empty for none.
    QString name;
    int port = 6379;
    /// Database of the device-client registry.
    int client_db = 2;
    /// Database of the driver state.
    int state_db = 0;
    /// Database of the downlink queues.
    int queue_db = 7;

    /// A connection to that server, which stays off the network for now.
    RedisClient::Connection connection() const;
};

/// Reads the "redis" settings object: "host", "auth", "name", "port", "cleint_db", "state_db" and
/// "queue_db". A missing or mistyped key takes its default.
redis_conf redis_conf_from_json(const QJsonObject& settings);
