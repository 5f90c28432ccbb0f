#pragma once

#include "redis/device_client_database_redis.h"
#include "redis/driver_state.h"
#include "redis/redis_conf.h"

#include "tests/support/qt_literals.h"

#include <array>
#include <functional>
#include <memory>
#include <ostream>
#include <string>

/// A store in Redis as the faults of the wire see it. What a device has there comes down to one
/// number.
class RedisStore {
public:
    virtual ~RedisStore() = default;
    /// Stores the device's number, durably too.
    virtual void write(int device, int number) = 0;
    /// 0 without one.
    virtual int read(int device) = 0;
};

class StateStore : public RedisStore {
public:
    StateStore(const redis_conf& conf, const std::string& mongoUrl) : m_states(conf, mongoUrl) {}
    void write(int device, int number) override {
        m_states.SetValue(device, QStringLiteral("n"), number);
        m_states.Push(device, true);
    }
    void writeLarge(int device, int bytes) {
        m_states.SetValue(device, QStringLiteral("n"), QByteArray(bytes, 'x'));
        m_states.Push(device, true);
    }
    int read(int device) override {
        m_states.Pull(device);
        return m_states.GetAll(device).value(QStringLiteral("n")).toInt();
    }

private:
    redis::DriverStateRedis m_states;
};

class QueueStore : public RedisStore {
public:
    QueueStore(const redis_conf& conf, const std::string& mongoUrl) : m_queues(conf, mongoUrl) {}
    void write(int device, int number) override {
        model::dl_queues record;
        record.dl[QStringLiteral("q")].timeout = number;
        m_queues.Push(device, record, true);
    }
    int read(int device) override {
        return m_queues.Pull(device).dl.value(QStringLiteral("q")).timeout;
    }

private:
    redis::dl_queue m_queues;
};

/// The number is that of the device's clients, which others write.
class ClientStore : public RedisStore {
public:
    ClientStore(const redis_conf& conf, const std::string& /*mongoUrl*/) : m_clients(conf) {}
    void write(int /*device*/, int /*number*/) override {}
    int read(int device) override {
        return static_cast<int>(repository().GetDeviceClients(device).size());
    }

protected:
    interfaces::IDeviceClientsRepository& repository() {
        return *m_clients.DeviceClientsRepository();
    }

private:
    redis::DeviceClientDatabaseRedis m_clients;
};

/// The number is the device's protocol.
class ClientInfoStore : public ClientStore {
public:
    using ClientStore::ClientStore;
    int read(int device) override { return repository().GetDeviceInfo(device).first.toInt(); }
};

/// One of these as the parameter of a test.
struct RedisKind {
    const char* name;
    std::function<std::unique_ptr<RedisStore>(const redis_conf&, const std::string& mongoUrl)> make;
    /// The key of a device is its number after that.
    QByteArray keyStart;
    int db;
    /// Stores the number past the store, as a command without key.
    std::function<QList<QByteArray>(const QByteArray& key, int number)> fill;
    /// That asks Redis for it.
    QByteArray readCommand;
    /// Where the durable copy has the number; nowhere if there is none.
    std::string collection;
    std::string path;

    bool isWritten() const { return !collection.empty(); }
    QByteArray key(int device) const { return keyStart + QByteArray::number(device); }

    friend void PrintTo(const RedisKind& kind, std::ostream* out) { *out << kind.name; }
};

template <typename Store>
auto making() {
    return [](const redis_conf& conf, const std::string& mongoUrl) {
        return std::make_unique<Store>(conf, mongoUrl);
    };
}

/// Those that write.
inline std::array<RedisKind, 2> writtenKinds() {
    return {
        RedisKind{"State", making<StateStore>(), ":", 0,
                  [](const QByteArray& key, int number) -> QList<QByteArray> {
                      return {"SET", key, "{\"n\":" + QByteArray::number(number) + '}'};
                  },
                  "GET", "states", "state.n"},
        RedisKind{"Queue", making<QueueStore>(), "", 7,
                  [](const QByteArray& key, int number) -> QList<QByteArray> {
                      return {"SET", key,
                              "{\"dl\":{\"q\":{\"timeout\":" + QByteArray::number(number) + "}}}"};
                  },
                  "GET", "dl_queues", "state.dl.q.timeout"},
    };
}

inline std::array<RedisKind, 4> redisKinds() {
    const auto [state, queue] = writtenKinds();
    return {
        state,
        queue,
        RedisKind{"Clients", making<ClientStore>(), "dev:clients:", 2,
                  [](const QByteArray& key, int number) {
                      QList<QByteArray> command{"SADD", key};
                      for (int client = 0; client < number; ++client) {
                          command.append("client " + QByteArray::number(client));
                      }
                      return command;
                  },
                  "SMEMBERS", "", ""},
        RedisKind{"ClientInfo", making<ClientInfoStore>(), "dev:properties:", 2,
                  [](const QByteArray& key, int number) -> QList<QByteArray> {
                      return {"HSET", key, "protocol", QByteArray::number(number)};
                  },
                  "HGET", "", ""},
    };
}
