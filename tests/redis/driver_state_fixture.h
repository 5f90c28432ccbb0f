#pragma once

#include "redis/driver_state.h"

#include "tests/redis/redis_store_fixture.h"

/// A driver state with the prefix "drv" on a Redis server of its own: the connection of its
/// downlink queues is the proxy's first, its own the second.
class DriverStateTest : public RedisStoreTest {
protected:
    DriverStateTest() {
        states.SetPrefix(QStringLiteral("drv"));
        proxy.forget();
    }

    /// Sets the one value "a" of a device.
    void setA(int modem_id, double value) { states.SetValue(modem_id, QStringLiteral("a"), value); }

    /// A device's state, replaced by this text as it stands in Redis.
    void pullText(int modem_id, const QByteArray& json) {
        server.run({"SET", "drv:" + QByteArray::number(modem_id), json});
        states.Pull(modem_id);
    }

    QByteArray inRedis(const QByteArray& key, int db = 0) {
        return server.run({"GET", key}, db).toByteArray();
    }

    redis::DriverStateRedis states{conf(), test_support::mongoUrl()};
};
