#include "bench/records.h"
#include "bench/redis_contests.h"
#include "model/documents/device_object.h"

namespace bench {

namespace {

using Queues = std::vector<model::dl_queues>;

Queues queuesOf(std::size_t size) {
    Queues all;
    for (std::size_t device = 0; device < size; ++device) {
        all.push_back(queues(static_cast<int>(device)));
    }
    return all;
}

std::shared_ptr<StoredDevices> storeQueues(Stores& stores, const Queues& queues, Copies copies) {
    auto& queue = *stores.driverState().DLqueue();
    return storeDevices(
        stores, Stores::queueDb, layout::dl_queues::collection, queues.size(), copies,
        [&](int device) {
            queue.Push(device, queues[static_cast<std::size_t>(device)], copies == Copies::kept);
        },
        [](int device) { return QByteArray::number(device); });
}

Contest push(Stores& stores, std::size_t size, bool persist) {
    const auto queues = queuesOf(size);
    const auto devices = storeQueues(stores, queues, persist ? Copies::kept : Copies::none);
    return callByCall(
        size,
        [&queue = *stores.driverState().DLqueue(), queues, persist](std::size_t device) {
            queue.Push(static_cast<int>(device), queues[device], persist);
        },
        persist ? rawSetAndUpdate(devices) : rawSet(devices));
}

Contest pull(Stores& stores, std::size_t size, bool fromCopy) {
    const auto devices =
        storeQueues(stores, queuesOf(size), fromCopy ? Copies::kept : Copies::none);
    if (fromCopy) {
        stores.emptyRedis(Stores::queueDb);
    }
    return callByCall(
        size,
        [&queue = *stores.driverState().DLqueue()](std::size_t device) {
            queue.Pull(static_cast<int>(device));
        },
        fromCopy ? rawGetAndFind(devices) : rawGet(devices));
}

} // namespace

void registerDownlinkQueues(LazyStores& stores) {
    const auto withFlag = [](auto prepare, bool flag) {
        return [=](Stores& connected, std::size_t size) { return prepare(connected, size, flag); };
    };
    registerForSizes(stores, "queue Push", writeGoal, withFlag(push, false));
    registerForSizes(stores, "queue Push persist", writeGoal, withFlag(push, true));
    registerForSizes(stores, "queue Pull", readGoal, withFlag(pull, false));
    registerForSizes(stores, "queue Pull from copy", readGoal, withFlag(pull, true));
}

} // namespace bench
