#include "bench/device_object_contests.h"
#include "bench/records.h"
#include "model/documents/device_object.h"

namespace bench {

namespace {

DeviceCalls makeQueues(Stores& stores, std::size_t size) {
    auto& queue = *stores.driverState().DLqueue();
    std::vector<model::dl_queues> all(size);
    for (std::size_t device = 0; device < size; ++device) {
        all[device] = queues(static_cast<int>(device));
    }
    const auto ready = std::make_shared<const std::vector<model::dl_queues>>(std::move(all));
    const auto of = [ready](int device) -> const model::dl_queues& {
        return (*ready)[static_cast<std::size_t>(device)];
    };
    return {
        .push = [&queue, of](int device, bool persist) { queue.Push(device, of(device), persist); },
        .pull = [&queue](int device) { queue.Pull(device); },
        .write = nullptr,
        .read = [of](int device, const redisReply& /*text*/) { deepCopy(of(device)); },
        .readCopy = [of](int device) { deepCopy(of(device)); }};
}

} // namespace

DeviceObjects queueObjects() {
    return {.name = "queue",
            .db = Stores::queueDb,
            .copies = layout::dl_queues::collection,
            .keyOf = [](int device) { return QByteArray::number(device); },
            .pushGoals = costAtMost(1.35),
            .pullGoals = costAtMost(1.5),
            .make = makeQueues};
}

void addDownlinkQueues(Comparisons& comparisons, LazyStores& stores) {
    addDeviceObjects(comparisons, stores, queueObjects());
}

} // namespace bench
