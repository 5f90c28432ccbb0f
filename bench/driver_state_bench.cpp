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

QByteArray keyOf(int device) {
    return "bench:state:" + QByteArray::number(device);
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

DeviceObjects states() {
    return {.name = "state",
            .db = Stores::stateDb,
            .copies = layout::states::collection,
            .keyOf = keyOf,
            .pushGoals = costAtMost(1.35),
            .pullGoals = costAtMost(1.05, "floor"),
            .make = makeStates};
}

std::string commandForAll(std::size_t size) {
    QList<QByteArray> command{"MGET"};
    for (int device = 0; std::cmp_less(device, size); ++device) {
        command.append(keyOf(device));
    }
    return RawRedis::wire(command);
}

void scanKeys(RawRedis& redis) {
    QByteArray cursor = "0";
    do {
        const auto reply = redis.run({"SCAN", cursor, "MATCH", "bench:state:*", "COUNT", "1000"});
        cursor = reply->element[0]->str;
    } while (cursor != "0");
}

Contest getAllStates(Stores& stores, std::size_t size) {
    storeObjects(stores, states(), size, false);
    const auto answer = std::make_shared<std::shared_ptr<QHash<int, QJsonObject>>>();
    const auto ask = [&state = stores.driverState(), answer] {
        *answer = state.GetAllStates(QStringLiteral("state"), QStringLiteral("bench"));
        return static_cast<std::size_t>((*answer)->size());
    };
    const auto scanAndGet = [&redis = stores.rawRedis(Stores::stateDb),
                             getAll = commandForAll(size)] {
        scanKeys(redis);
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

} // namespace

void addDriverState(Comparisons& comparisons, LazyStores& stores) {
    addDeviceObjects(comparisons, stores, states());
    addForSizes(comparisons, stores, "state GetAllStates", costAtMost(1.10, "floor"), getAllStates);
}

} // namespace bench
