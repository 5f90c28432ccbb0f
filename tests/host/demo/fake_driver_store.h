#pragma once

#include "host/demo/redis_side.h"
#include "interfaces/idevice_clients_repository.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/idriver_state.h"

#include <functional>
#include <map>

namespace test_support {

/// Redis and the durable copies, in memory; what the fakes below share.
struct FakeStores {
    std::map<QString, QJsonObject> redisStates;
    std::map<int, QJsonObject> durableStates;
    std::map<int, model::dl_queues> redisQueues;
    std::map<int, model::dl_queues> durableQueues;
    std::map<int, host::DeviceEntry> registry;
    /// A store that forgets its durable copies.
    bool forgetsDurable = false;
    /// Called after every change, so that a test can let the stores misbehave.
    std::function<void(FakeStores&)> spoil = [](FakeStores& /*stores*/) {};
};

class FakeRedisSide final : public host::RedisSide {
public:
    explicit FakeRedisSide(FakeStores& stores) : m_stores(stores) {}

    bool loseState(const QString& prefix, int device) override {
        return m_stores.redisStates.erase(prefix + QLatin1Char(':') + QString::number(device)) != 0;
    }
    bool loseQueues(int device) override { return m_stores.redisQueues.erase(device) != 0; }
    void enter(const host::DeviceEntry& entry) override {
        m_stores.registry[entry.modem_id] = entry;
        m_stores.spoil(m_stores);
    }
    void strike(int device) override { m_stores.registry.erase(device); }

private:
    FakeStores& m_stores;
};

class FakeDlQueue final : public interfaces::IDriverDLqueue {
public:
    explicit FakeDlQueue(FakeStores& stores) : m_stores(stores) {}

    model::dl_queues Pull(int modem_id) override {
        const auto found = m_stores.redisQueues.find(modem_id);
        return found != m_stores.redisQueues.end() ? found->second
                                                   : m_stores.durableQueues[modem_id];
    }
    bool Push(int modem_id, const model::dl_queues& queues, bool persist) override {
        m_stores.redisQueues[modem_id] = queues;
        if (persist && !m_stores.forgetsDurable) {
            m_stores.durableQueues[modem_id] = queues;
        }
        m_stores.spoil(m_stores);
        return true;
    }
    bool Delete(int modem_id) override {
        m_stores.redisQueues.erase(modem_id);
        m_stores.durableQueues.erase(modem_id);
        return true;
    }
    bool DeleteDevices(const QList<int>& /*modem_ids*/) override { return true; }

private:
    FakeStores& m_stores;
};

class FakeDriverState final : public interfaces::IDriverState {
public:
    explicit FakeDriverState(FakeStores& stores) : m_stores(stores), m_queue(stores) {}

    void SetPrefix(const QString& prefix) override { m_prefix = prefix; }
    const QString& GetPrefix() override { return m_prefix; }
    bool Pull(int modem_id) override {
        const auto found = m_stores.redisStates.find(key(modem_id));
        m_working[modem_id] =
            found != m_stores.redisStates.end() ? found->second : m_stores.durableStates[modem_id];
        return true;
    }
    bool Push(int modem_id, bool persist) override {
        m_stores.redisStates[key(modem_id)] = m_working[modem_id];
        if (persist && !m_stores.forgetsDurable) {
            m_stores.durableStates[modem_id] = m_working[modem_id];
        }
        m_stores.spoil(m_stores);
        return true;
    }
    bool Delete(int modem_id) override {
        m_stores.redisStates.erase(key(modem_id));
        m_stores.durableStates.erase(modem_id);
        return true;
    }
    std::variant<int, double, QByteArray> GetValue(int /*modem_id*/,
                                                   const QString& /*name*/) override {
        return 0;
    }
    void SetValue(int modem_id, const QString& name,
                  const std::variant<int, double, QByteArray>& value) override {
        if (const auto* const number = std::get_if<double>(&value)) {
            m_working[modem_id].insert(name, *number);
        } else if (const auto* const text = std::get_if<QByteArray>(&value)) {
            m_working[modem_id].insert(name, QString::fromUtf8(*text));
        }
    }
    QVariant GetValueAsVariant(int /*modem_id*/, const QString& /*name*/) override { return {}; }
    void SetValueAsVariant(int modem_id, const QString& name, const QVariant& value) override {
        m_working[modem_id].insert(name, value.toJsonObject());
    }
    QJsonObject GetAll(int modem_id) override { return m_working[modem_id]; }
    QList<QVariant> GetIDs(const QString& /*first*/, const QString& /*second*/) override {
        return {};
    }
    bool DeleteDevices(const QList<int>& /*modem_ids*/, const QDateTime& /*from*/,
                       const QDateTime& /*to*/) override {
        return true;
    }
    std::shared_ptr<QHash<int, QJsonObject>> GetAllStates(const QString& first,
                                                          const QString& second) override {
        const QString prefix = second + QLatin1Char(':') + first + QLatin1Char(':');
        auto states = std::make_shared<QHash<int, QJsonObject>>();
        for (const auto& [stateKey, state] : m_stores.redisStates) {
            if (stateKey.startsWith(prefix)) {
                states->insert(stateKey.midRef(prefix.size()).toInt(), state);
            }
        }
        return states;
    }
    interfaces::IDriverDLqueue* DLqueue() override { return &m_queue; }

private:
    QString key(int modem_id) const {
        return m_prefix + QLatin1Char(':') + QString::number(modem_id);
    }

    FakeStores& m_stores;
    FakeDlQueue m_queue;
    QString m_prefix;
    std::map<int, QJsonObject> m_working;
};

class FakeRegistry final : public interfaces::IDeviceClientsRepository {
public:
    explicit FakeRegistry(FakeStores& stores) : m_stores(stores) {}

    std::list<QString> GetDeviceClients(int modem_id) override {
        const auto entry = m_stores.registry.find(modem_id);
        if (entry == m_stores.registry.end()) {
            return {};
        }
        return {entry->second.clients.begin(), entry->second.clients.end()};
    }
    std::pair<QString, QString> GetDeviceInfo(int modem_id) override {
        const auto entry = m_stores.registry.find(modem_id);
        if (entry == m_stores.registry.end()) {
            return {};
        }
        return {entry->second.protocol, entry->second.hw_type};
    }

private:
    FakeStores& m_stores;
};

} // namespace test_support
