#pragma once

#include <QJsonObject>
#include <QString>

/// Settings of one Redis connection; every Redis-backed object keeps a copy.
struct redis_conf {
    QString host;
    /// Password; empty for none.
    QString auth;
    /// Connection name; empty for none.
    QString name;
    int port = 0;
    /// Database of the device-client registry.
    int client_db = 0;
    /// Database of the driver state.
    int state_db = 0;
    /// Database of the downlink queues.
    int queue_db = 0;
};

/// Reads the "redis" settings object: "host", "auth", "name", "port", "cleint_db", "state_db" and
/// "queue_db". A missing or mistyped key takes its default (interfaces::IDatabaseFactory lists
/// them); no number is checked for its range.
redis_conf redis_conf_from_json(const QJsonObject& settings);
