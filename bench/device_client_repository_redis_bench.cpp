#include "bench/store_contests.h"

namespace bench {

namespace {

QByteArray clientsKey(std::size_t device) {
    return "dev:clients:" + QByteArray::number(static_cast<int>(device));
}

QByteArray propertiesKey(std::size_t device) {
    return "dev:properties:" + QByteArray::number(static_cast<int>(device));
}

RawRedis& storeClients(Stores& stores, std::size_t size) {
    RawRedis& redis = stores.emptyRedis(Stores::clientDb);
    for (std::size_t device = 0; device < size; ++device) {
        redis.run({"SADD", clientsKey(device), "water works", "housing association", "caretaker"});
        redis.run({"HSET", propertiesKey(device), "hw_type", "amiplus", "protocol", "wM-Bus"});
    }
    return stores.rawRedis(Stores::clientDb);
}

Contest getDeviceClients(Stores& stores, std::size_t size) {
    RawRedis& redis = storeClients(stores, size);
    std::vector<std::string> members;
    members.reserve(size);
    for (std::size_t device = 0; device < size; ++device) {
        members.push_back(RawRedis::wire({"SMEMBERS", clientsKey(device)}));
    }
    return callByCall(
        size,
        [&repository = stores.clients()](std::size_t device) {
            repository.GetDeviceClients(static_cast<int>(device));
        },
        [&redis, members](std::size_t device) { redis.send(members[device]); });
}

Contest getDeviceInfo(Stores& stores, std::size_t size) {
    RawRedis& redis = storeClients(stores, size);
    std::vector<std::pair<std::string, std::string>> fields;
    fields.reserve(size);
    for (std::size_t device = 0; device < size; ++device) {
        fields.emplace_back(RawRedis::wire({"HGET", propertiesKey(device), "hw_type"}),
                            RawRedis::wire({"HGET", propertiesKey(device), "protocol"}));
    }
    return callByCall(
        size,
        [&repository = stores.clients()](std::size_t device) {
            repository.GetDeviceInfo(static_cast<int>(device));
        },
        [&redis, fields](std::size_t device) {
            redis.send(fields[device].first);
            redis.send(fields[device].second);
        });
}

} // namespace

void registerDeviceClients(LazyStores& stores) {
    registerForSizes(stores, "clients GetDeviceClients", readGoal, getDeviceClients);
    registerForSizes(stores, "clients GetDeviceInfo", readGoal, getDeviceInfo);
}

} // namespace bench
