#include "host/driver_demo.h"

#include "host/failure.h"
#include "host/read_back.h"

#include <QStringList>

namespace host {

namespace {

// GetAllStates and GetIDs look for keys of the form SECOND:FIRST:DEVICE.
QString statePrefixFirst() {
    return QStringLiteral("state");
}
QString statePrefixSecond() {
    return QStringLiteral("kelvro-host-demo");
}
QString statePrefix() {
    return statePrefixSecond() + QLatin1Char(':') + statePrefixFirst();
}

[[noreturn]] void refuse(const QString& what, int device) {
    throw Failure(QStringLiteral("the store holds %1 of device %2 that no demo wrote; the demo "
                                 "would have to replace it and does not run")
                      .arg(what)
                      .arg(device));
}

template <class Record>
std::function<bool(const Record&)> isOf(int device) {
    return [device](const Record& record) { return record.modem_id == device; };
}

template <class Record>
std::function<bool(const Record&)> any() {
    return [](const Record& /*record*/) { return true; };
}

template <class Record>
void setValues(interfaces::IDriverState& state, const Record& record) {
    for (auto value = record.values.begin(); value != record.values.end(); ++value) {
        if (value.value().isDouble()) {
            state.SetValue(record.modem_id, value.key(), value.value().toDouble());
        } else if (value.value().isString()) {
            state.SetValue(record.modem_id, value.key(), value.value().toString().toUtf8());
        } else {
            state.SetValueAsVariant(record.modem_id, value.key(), value.value().toObject());
        }
    }
}

DeviceState pull(interfaces::IDriverState& state, int device) {
    state.Pull(device);
    return {device, state.GetAll(device)};
}

DeviceEntry lookUp(interfaces::IDeviceClientsRepository& registry, int device) {
    const auto clients = registry.GetDeviceClients(device);
    const auto [protocol, hardware] = registry.GetDeviceInfo(device);
    return {device, {clients.begin(), clients.end()}, protocol, hardware};
}

template <class Record>
Accounting finish(const ReadBack<Record>& records, int missingInRedis, Console& console) {
    if (missingInRedis != 0) {
        console.line(
            QStringLiteral("%1 were not in Redis after they had been pushed").arg(missingInRedis));
    }
    console.complaints(records.complaints());
    auto accounting = records.accounting(static_cast<int>(records.written().size()), 0);
    // A record that only the durable copy holds is not stored as it must be.
    accounting.stored -= missingInRedis;
    return accounting;
}

} // namespace

Accounting runStateDemo(interfaces::IDriverState& state, interfaces::IDriverState& afterwards,
                        RedisSide& redis, const std::vector<model::message>& messages,
                        Console& console) {
    ReadBack<DeviceState> states(buildStates(messages));
    state.SetPrefix(statePrefix());
    afterwards.SetPrefix(statePrefix());
    for (const auto& record : states.written()) {
        if (!isReplaceable(pull(state, record.modem_id))) {
            refuse(QStringLiteral("a driver state"), record.modem_id);
        }
    }

    int missingInRedis = 0;
    for (const auto& record : states.written()) {
        state.Delete(record.modem_id);
        state.Pull(record.modem_id);
        setValues(state, record);
        state.Push(record.modem_id, true);
        states.countStored(1);
        missingInRedis += redis.loseState(statePrefix(), record.modem_id) ? 0 : 1;
        states.check(QStringLiteral("restored"), isOf<DeviceState>(record.modem_id),
                     {{record.modem_id, {pull(afterwards, record.modem_id)}}});
        afterwards.Push(record.modem_id, false);
    }

    ReadBack<DeviceState>::Returned all;
    const auto allStates = state.GetAllStates(statePrefixFirst(), statePrefixSecond());
    for (auto each = allStates->begin(); each != allStates->end(); ++each) {
        all[each.key()].push_back({each.key(), each.value()});
    }
    states.check(QStringLiteral("all states"), any<DeviceState>(), all);
    for (const auto& record : states.written()) {
        state.Delete(record.modem_id);
    }
    console.line(
        QStringLiteral("%1 states kept, pushed, lost from Redis and restored from MongoDB; "
                       "then deleted, since they do not expire.")
            .arg(states.written().size()));
    return finish(states, missingInRedis, console);
}

Accounting runQueueDemo(interfaces::IDriverDLqueue& queues, RedisSide& redis,
                        const std::vector<model::message>& messages, Console& console) {
    ReadBack<DeviceQueues> records(buildQueues(messages));
    for (const auto& record : records.written()) {
        if (!isReplaceable(DeviceQueues{record.modem_id, queues.Pull(record.modem_id)})) {
            refuse(QStringLiteral("a downlink queue"), record.modem_id);
        }
    }

    int missingInRedis = 0;
    for (const auto& record : records.written()) {
        const int device = record.modem_id;
        queues.Push(device, record.queues, true);
        records.countStored(1);
        records.check(QStringLiteral("pulled from Redis"), isOf<DeviceQueues>(device),
                      {{device, {{device, queues.Pull(device)}}}});
        missingInRedis += redis.loseQueues(device) ? 0 : 1;
        records.check(QStringLiteral("pulled from MongoDB"), isOf<DeviceQueues>(device),
                      {{device, {{device, queues.Pull(device)}}}});
        queues.Delete(device);
    }
    console.line(
        QStringLiteral("%1 downlink queues pushed, pulled from Redis and, lost there, from "
                       "MongoDB; then deleted, since they do not expire.")
            .arg(records.written().size()));
    return finish(records, missingInRedis, console);
}

Accounting runRegistryDemo(interfaces::IDeviceClientsRepository& registry, RedisSide& redis,
                           const std::vector<model::message>& messages, Console& console) {
    ReadBack<DeviceEntry> entries(buildEntries(messages));
    for (const auto& entry : entries.written()) {
        if (!isReplaceable(lookUp(registry, entry.modem_id))) {
            refuse(QStringLiteral("a registry entry"), entry.modem_id);
        }
    }

    for (const auto& entry : entries.written()) {
        redis.strike(entry.modem_id);
        redis.enter(entry);
        entries.countStored(1);
        entries.check(QStringLiteral("looked up"), isOf<DeviceEntry>(entry.modem_id),
                      {{entry.modem_id, {lookUp(registry, entry.modem_id)}}});
        redis.strike(entry.modem_id);
    }
    console.line(QStringLiteral("%1 devices entered into the client registry, looked up and struck "
                                "out again.")
                     .arg(entries.written().size()));
    return finish(entries, 0, console);
}

} // namespace host
