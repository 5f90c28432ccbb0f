#include "host/demo/demo_parts.h"
#include "host/demo/queries.h"

#include <algorithm>
#include <functional>

namespace host {

namespace {

// GetAllStates looks for keys of the form SECOND:FIRST:DEVICE.
QString statePrefixFirst() {
    return QStringLiteral("state");
}
QString statePrefixSecond() {
    return QStringLiteral("kelvro-host-demo");
}
QString statePrefix() {
    return statePrefixSecond() + QLatin1Char(':') + statePrefixFirst();
}

template <class Record>
Selection<Record> isOf(int device) {
    return [device](const Record& record) { return record.modem_id == device; };
}

/// A device's record; nothing if it is empty, as that of a device which has none.
template <class Record>
Returned<Record> found(const Record& record) {
    return isEmpty(record) ? Returned<Record>() : Returned<Record>{{record.modem_id, {record}}};
}

/// What the three parts share: one record for each device, and an operation of the store for each.
template <class Record>
Part<Record> devicePart(const QString& kind, std::vector<Record> records,
                        const std::function<Record(int)>& look,
                        const std::function<void(int)>& remove,
                        const std::function<void(const Record&)>& store) {
    const auto devices = distinct(records, &Record::modem_id);
    Part<Record> part;
    part.kind = kind;
    part.origin = QLatin1String("made");
    part.records = std::move(records);
    part.expires = false;
    part.find = [=] {
        Returned<Record> all;
        for (const int device : devices) {
            all.merge(found(look(device)));
        }
        return all;
    };
    part.remove = [=] { std::ranges::for_each(devices, remove); };
    part.store = [=](std::span<Record> batch) { std::ranges::for_each(batch, store); };
    return part;
}

void setValues(interfaces::IDriverState& state, const DeviceState& record) {
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

void push(interfaces::IDriverState& state, const DeviceState& record) {
    state.Pull(record.modem_id);
    setValues(state, record);
    state.Push(record.modem_id, true);
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

/// The record must have been in Redis, or only its durable copy was stored.
template <class Record>
void expectLost(ReadBack<Record>& records, const Record& record, bool wasThere) {
    if (!wasThere) {
        records.complain(record, QStringLiteral("not in Redis after it had been pushed"));
    }
}

void readBackStates(interfaces::IDriverState& afterwards, RedisSide& redis,
                    ReadBack<DeviceState>& states, Console& /*console*/) {
    for (const auto& record : states.written()) {
        expectLost(states, record, redis.loseState(statePrefix(), record.modem_id));
        states.check(QStringLiteral("restored"), isOf<DeviceState>(record.modem_id),
                     found(pull(afterwards, record.modem_id)));
        afterwards.Push(record.modem_id, false);
    }
    Returned<DeviceState> all;
    const auto allStates = afterwards.GetAllStates(statePrefixFirst(), statePrefixSecond());
    for (auto each = allStates->begin(); each != allStates->end(); ++each) {
        all[each.key()].push_back({each.key(), each.value()});
    }
    states.check(QStringLiteral("all states"), everyRecord, all);
}

void readBackQueues(interfaces::IDriverDLqueue& queues, RedisSide& redis,
                    ReadBack<DeviceQueues>& records, Console& /*console*/) {
    for (const auto& record : records.written()) {
        const int device = record.modem_id;
        const auto check = [&](const QString& query) {
            records.check(query, isOf<DeviceQueues>(device),
                          found(DeviceQueues{device, queues.Pull(device)}));
        };
        check(QStringLiteral("pulled from Redis"));
        expectLost(records, record, redis.loseQueues(device));
        check(QStringLiteral("pulled from MongoDB"));
    }
}

void readBackEntries(interfaces::IDeviceClientsRepository& registry, ReadBack<DeviceEntry>& entries,
                     Console& /*console*/) {
    for (const auto& entry : entries.written()) {
        entries.check(QStringLiteral("looked up"), isOf<DeviceEntry>(entry.modem_id),
                      found(lookUp(registry, entry.modem_id)));
    }
}

} // namespace

Part<DeviceState> statePart(interfaces::IDriverState& state, interfaces::IDriverState& afterwards,
                            RedisSide& redis, const std::vector<model::message>& messages) {
    state.SetPrefix(statePrefix());
    afterwards.SetPrefix(statePrefix());
    auto part = devicePart<DeviceState>(
        QStringLiteral("driver states"), buildStates(messages),
        [&state](int device) { return pull(state, device); },
        [&state](int device) { state.Delete(device); },
        [&state](const DeviceState& record) { push(state, record); });
    part.origin = QLatin1String("kept");
    part.heading = QStringLiteral("Driver state, downlink queues and client registry");
    part.remark = QStringLiteral("States are pushed, lost from Redis and restored from MongoDB; "
                                 "then deleted, since they do not expire.");
    part.readBack = std::bind_front(readBackStates, std::ref(afterwards), std::ref(redis));
    return part;
}

Part<DeviceQueues> queuePart(interfaces::IDriverDLqueue& queues, RedisSide& redis,
                             const std::vector<model::message>& messages) {
    auto part = devicePart<DeviceQueues>(
        QStringLiteral("downlink queues"), buildQueues(messages),
        [&queues](int device) { return DeviceQueues{device, queues.Pull(device)}; },
        [&queues](int device) { queues.Delete(device); },
        [&queues](const DeviceQueues& record) {
            queues.Push(record.modem_id, record.queues, true);
        });
    part.remark = QStringLiteral("Downlink queues are pushed, pulled from Redis and, lost there, "
                                 "from MongoDB; then deleted, since they do not expire.");
    part.readBack = std::bind_front(readBackQueues, std::ref(queues), std::ref(redis));
    return part;
}

Part<DeviceEntry> registryPart(interfaces::IDeviceClientsRepository& registry, RedisSide& redis,
                               const std::vector<model::message>& messages) {
    auto part = devicePart<DeviceEntry>(
        QStringLiteral("registry entries"), buildEntries(messages),
        [&registry](int device) { return lookUp(registry, device); },
        [&redis](int device) { redis.strike(device); },
        [&redis](const DeviceEntry& entry) { redis.enter(entry); });
    part.remark = QStringLiteral("Devices are entered into the client registry, looked up and "
                                 "struck out again.");
    part.readBack = std::bind_front(readBackEntries, std::ref(registry));
    return part;
}

} // namespace host
