#include "bench/store_contests.h"

namespace bench {

namespace {

QByteArray keyOf(const char* kind, std::size_t device) {
    return QByteArray("dev:") + kind + ':' + QByteArray::number(static_cast<int>(device));
}

void storeClients(RawRedis& redis, std::size_t size) {
    for (std::size_t device = 0; device < size; ++device) {
        const QByteArray household = "household " + QByteArray::number(static_cast<int>(device));
        redis.run(
            {"SADD", keyOf("clients", device), "water works", "housing association", household});
        redis.run(
            {"HSET", keyOf("properties", device), "hw_type", "amiplus", "protocol", "wM-Bus"});
    }
}

/// The raw side sends the commands that `commandsFor(device)` gives.
template <typename CommandsFor>
Contest askForEach(Stores& stores, std::size_t size, const Call& plugin, CommandsFor commandsFor) {
    storeClients(stores.emptyRedis(Stores::clientDb), size);
    std::vector<std::vector<std::string>> commands(size);
    for (std::size_t device = 0; device < size; ++device) {
        commands[device] = commandsFor(device);
    }
    return callByCall(size, plugin,
                      [&redis = stores.rawRedis(Stores::clientDb), commands](std::size_t device) {
                          for (const std::string& command : commands[device]) {
                              redis.send(command);
                          }
                      });
}

Contest getDeviceClients(Stores& stores, std::size_t size) {
    return askForEach(
        stores, size,
        [&repository = stores.clients()](std::size_t device) {
            repository.GetDeviceClients(static_cast<int>(device));
        },
        [](std::size_t device) {
            return std::vector{RawRedis::wire({"SMEMBERS", keyOf("clients", device)})};
        });
}

Contest getDeviceInfo(Stores& stores, std::size_t size) {
    return askForEach(
        stores, size,
        [&repository = stores.clients()](std::size_t device) {
            repository.GetDeviceInfo(static_cast<int>(device));
        },
        [](std::size_t device) {
            return std::vector{RawRedis::wire({"HGET", keyOf("properties", device), "hw_type"}),
                               RawRedis::wire({"HGET", keyOf("properties", device), "protocol"})};
        });
}

} // namespace

void addDeviceClients(Comparisons& comparisons, LazyStores& stores) {
    addForSizes(comparisons, stores, "clients GetDeviceClients", readGoal, getDeviceClients);
    addForSizes(comparisons, stores, "clients GetDeviceInfo", readGoal, getDeviceInfo);
}

} // namespace bench
