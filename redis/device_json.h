#pragma once

#include "redisclient/redisclient.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVariant>

namespace redis {

/// The object in a JSON text; empty if it is none.
inline QJsonObject objectOf(const QByteArray& json) {
    return QJsonDocument::fromJson(json).object();
}

/// JSON objects by device, each under a key in Redis and, if asked for, in a durable store
/// (mongo::driver_state_persistent or mongo::dl_queue_persistent) under the device's number.
///
/// Borrows all that it works on. Every operation blocks. Replies to SET and DEL are not examined;
/// the client libraries' exceptions pass through unchanged.
template <typename Durable>
struct device_json {
    RedisClient::Connection& connection;
    int db;
    Durable& durable;

    /// Connects to Redis (whether that works shows at the first command) and lays the durable store
    /// out.
    void open() {
        connection.connect(true);
        durable.Create();
    }

    /// The durable copy if Redis answers with anything but a text.
    QJsonObject pull(const QByteArray& key, int modem_id) {
        const QVariant reply =
            connection.commandSync({QByteArrayLiteral("GET"), key}, db).getValue();
        return reply.type() == QVariant::ByteArray ? objectOf(reply.toByteArray())
                                                   : durable.Get(modem_id);
    }

    /// `json` is the text of `object()`, which is asked for only if it is to be durable.
    template <typename Object>
    void push(const QByteArray& key, int modem_id, const QByteArray& json, bool persist,
              const Object& object) {
        connection.commandSync({QByteArrayLiteral("SET"), key, json}, db);
        if (persist) {
            durable.Save(modem_id, object());
        }
    }

    void remove(const QByteArray& key, int modem_id) {
        connection.commandSync({QByteArrayLiteral("DEL"), key}, db);
        durable.Delete(modem_id);
    }
};

} // namespace redis
