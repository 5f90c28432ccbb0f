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
    return {.push =
                [&queue, all = std::move(all)](int device, bool persist) {
                    queue.Push(device, all[static_cast<std::size_t>(device)], persist);
                },
            .pull = [&queue](int device) { queue.Pull(device); }};
}

} // namespace

void addDownlinkQueues(Comparisons& comparisons, LazyStores& stores) {
    addDeviceObjects(comparisons, stores,
                     {.name = "queue",
                      .db = Stores::queueDb,
                      .copies = layout::dl_queues::collection,
                      .keyOf = [](int device) { return QByteArray::number(device); },
                      .make = makeQueues});
}

} // namespace bench
