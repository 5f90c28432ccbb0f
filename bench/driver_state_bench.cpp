#include "bench/device_object_contests.h"
#include "bench/records.h"
#include "model/documents/device_object.h"

#include <hiredis/hiredis.h>

#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>

#include <map>
#include <memory>
#include <utility>

namespace bench {

namespace {

const QString states = QStringLiteral("state");

QByteArray startOf(const QString& kind) {
    return "bench:" + kind.toLatin1() + ':';
}

QByteArray keyOf(int device) {
    return startOf(states) + QByteArray::number(device);
}

/// The readings of a real meter as the state of a device: numbers and texts.
void setValues(interfaces::IDriverState& state, int device, const QJsonObject& readings) {
    for (auto reading = readings.begin(); reading != readings.end(); ++reading) {
        const QJsonValue value = reading.value();
        if (value.isDouble()) {
            state.SetValue(device, reading.key(), value.toDouble());
        } else {
            state.SetValue(device, reading.key(), value.toString().toUtf8());
        }
    }
}

QJsonObject objectOf(const redisReply& text) {
    const auto json = QByteArray::fromRawData(text.str, static_cast<int>(text.len));
    return QJsonDocument::fromJson(json).object();
}

DeviceCalls makeStates(Stores& stores, std::size_t size) {
    auto& state = stores.driverState();
    state.SetPrefix(QStringLiteral("bench:state"));
    std::map<int, QJsonObject> made;
    int device = 0;
    for (const model::message& message : messages(size, 0)) {
        setValues(state, device, message.data.object());
        made[device] = deepCopy(state.GetAll(device));
        ++device;
    }
    const auto ready = std::make_shared<const std::map<int, QJsonObject>>(std::move(made));
    const auto pulled = std::make_shared<std::map<int, QJsonObject>>(*ready);
    return {
        .push = [&state](int of, bool persist) { state.Push(of, persist); },
        .pull = [&state](int of) { state.Pull(of); },
        .write = [ready](int of) { QJsonDocument{ready->at(of)}.toJson(QJsonDocument::Compact); },
        .read = [pulled](int of, const redisReply& text) { (*pulled)[of] = objectOf(text); },
        .readCopy = [ready, pulled](int of) { (*pulled)[of] = deepCopy(ready->at(of)); }};
}

std::string commandForAll(const QByteArray& start, std::size_t size) {
    QList<QByteArray> command{"MGET"};
    for (int device = 0; std::cmp_less(device, size); ++device) {
        command.append(start + QByteArray::number(device));
    }
    return RawRedis::wire(command);
}

void scanKeys(RawRedis& redis, const QByteArray& start) {
    QByteArray cursor = "0";
    do {
        const auto reply = redis.run({"SCAN", cursor, "MATCH", start + '*', "COUNT", "1000"});
        cursor = reply->element[0]->str;
    } while (cursor != "0");
}

Contest getAllStates(Stores& stores, std::size_t size) {
    storeObjects(stores, stateObjects(), size, false);
    return allStatesContest(stores, states, size);
}

} // namespace

DeviceObjects stateObjects() {
    return {.name = "state",
            .db = Stores::stateDb,
            .copies = layout::states::collection,
            .keyOf = keyOf,
            .pushGoals = costAtMost(1.35),
            .pullGoals = costAtMost(1.05, "floor"),
            .make = makeStates};
}

Contest allStatesContest(Stores& stores, const QString& kind, std::size_t size) {
    const auto answer = std::make_shared<std::shared_ptr<QHash<int, QJsonObject>>>();
    const auto ask = [&state = stores.driverState(), kind, answer] {
        *answer = state.GetAllStates(kind, QStringLiteral("bench"));
        return static_cast<std::size_t>((*answer)->size());
    };
    const QByteArray start = startOf(kind);
    const auto scanAndGet = [&redis = stores.rawRedis(Stores::stateDb), start,
                             getAll = commandForAll(start, size)] {
        scanKeys(redis, start);
        return redis.send(getAll);
    };
    return {.sides = sidesOf(
                ask, [scanAndGet] { return scanAndGet()->elements; },
                [scanAndGet, answer] {
                    const auto texts = scanAndGet();
                    *answer = std::make_shared<QHash<int, QJsonObject>>();
                    for (std::size_t i = 0; i < texts->elements; ++i) {
                        (*answer)->insert(static_cast<int>(i), objectOf(*texts->element[i]));
                    }
                    return texts->elements;
                }),
            .afterBlock = [answer] { *answer = nullptr; }};
}

void addDriverState(Comparisons& comparisons, LazyStores& stores) {
    addDeviceObjects(comparisons, stores, stateObjects());
    addForSizes(comparisons, stores, "state GetAllStates", costAtMost(1.10, "floor"), getAllStates);
}

} // namespace bench
