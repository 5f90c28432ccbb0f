#include "bench/records.h"
#include "bench/redis_contests.h"
#include "model/documents/device_object.h"

#include <hiredis/hiredis.h>

#include <QJsonObject>

#include <stdexcept>
#include <utility>
#include <variant>

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

std::shared_ptr<StoredDevices> storeStates(Stores& stores, std::size_t size, Copies copies) {
    auto& state = stores.driverState();
    state.SetPrefix(QStringLiteral("bench:state"));
    const auto meters = telegramMessages();
    return storeDevices(
        stores, Stores::stateDb, layout::states::collection, size, copies,
        [&](int device) {
            setValues(state, device,
                      meters[static_cast<std::size_t>(device) % meters.size()].data.object());
            state.Push(device, copies == Copies::kept);
        },
        keyOf);
}

Contest push(Stores& stores, std::size_t size, bool persist) {
    const auto devices = storeStates(stores, size, persist ? Copies::kept : Copies::none);
    return callByCall(
        size,
        [&state = stores.driverState(), persist](std::size_t device) {
            state.Push(static_cast<int>(device), persist);
        },
        persist ? rawSetAndUpdate(devices) : rawSet(devices));
}

Contest pull(Stores& stores, std::size_t size, bool fromCopy) {
    const auto devices = storeStates(stores, size, fromCopy ? Copies::kept : Copies::none);
    if (fromCopy) {
        stores.emptyRedis(Stores::stateDb);
    }
    return callByCall(
        size,
        [&state = stores.driverState()](std::size_t device) {
            state.Pull(static_cast<int>(device));
        },
        fromCopy ? rawGetAndFind(devices) : rawGet(devices));
}

Contest getAllStates(Stores& stores, std::size_t size) {
    const auto devices = storeStates(stores, size, Copies::none);
    QList<QByteArray> allStates{"MGET"};
    for (int device = 0; std::cmp_less(device, size); ++device) {
        allStates.append(keyOf(device));
    }
    const auto answer = std::make_shared<std::shared_ptr<QHash<int, QJsonObject>>>();
    return {.subject =
                [&state = stores.driverState(), answer] {
                    *answer = state.GetAllStates(QStringLiteral("state"), QStringLiteral("bench"));
                    return static_cast<std::size_t>((*answer)->size());
                },
            .baseline =
                [devices, ready = RawRedis::wire(allStates)] {
                    QByteArray cursor = "0";
                    do {
                        const auto reply = devices->redis->run(
                            {"SCAN", cursor, "MATCH", "bench:state:*", "COUNT", "1000"});
                        cursor = reply->element[0]->str;
                    } while (cursor != "0");
                    return devices->redis->send(ready)->elements;
                },
            .afterBlock = [answer] { *answer = nullptr; }};
}

} // namespace

void registerDriverState(LazyStores& stores) {
    const auto withFlag = [](auto prepare, bool flag) {
        return [=](Stores& connected, std::size_t size) { return prepare(connected, size, flag); };
    };
    registerForSizes(stores, "state Push", writeGoal, withFlag(push, false));
    registerForSizes(stores, "state Push persist", writeGoal, withFlag(push, true));
    registerForSizes(stores, "state Pull", readGoal, withFlag(pull, false));
    registerForSizes(stores, "state Pull from copy", readGoal, withFlag(pull, true));
    registerForSizes(stores, "state GetAllStates", readGoal, getAllStates);
}

} // namespace bench
