#include "bench/store_contests.h"

#include <list>

namespace bench {

namespace {

QByteArray keyOf(const char* kind, std::size_t device) {
    return QByteArray("dev:") + kind + ':' + QByteArray::number(static_cast<int>(device));
}

/// Of another name for each device.
QByteArray named(const char* name, std::size_t device) {
    return QByteArray(name) + ' ' + QByteArray::number(static_cast<int>(device));
}

std::list<QByteArray> clientsOf(std::size_t device) {
    return {named("water works", device), named("housing association", device),
            named("household", device)};
}

std::list<QByteArray> infoOf(std::size_t device) {
    return {named("amiplus", device), named("wM-Bus", device)};
}

void storeClients(RawRedis& redis, std::size_t size) {
    for (std::size_t device = 0; device < size; ++device) {
        for (const QByteArray& client : clientsOf(device)) {
            redis.run({"SADD", keyOf("clients", device), client});
        }
        const auto info = infoOf(device);
        redis.run({"HSET", keyOf("properties", device), "hw_type", info.front(), "protocol",
                   info.back()});
    }
}

/// The raw side sends the commands that `commandsFor(device)` gives; the floor also makes the texts
/// of the answer.
template <typename CommandsFor>
Contest askForEach(Stores& stores, std::size_t size, const Call& plugin, CommandsFor commandsFor,
                   std::list<QByteArray> (*answerOf)(std::size_t device)) {
    storeClients(stores.emptyRedis(Stores::clientDb), size);
    std::vector<std::vector<std::string>> commands(size);
    std::vector<std::list<QString>> answers(size);
    for (std::size_t device = 0; device < size; ++device) {
        commands[device] = commandsFor(device);
        for (const QByteArray& text : answerOf(device)) {
            answers[device].push_back(QString::fromUtf8(text));
        }
    }
    const Call send = [&redis = stores.rawRedis(Stores::clientDb), commands](std::size_t device) {
        for (const std::string& command : commands[device]) {
            redis.send(command);
        }
    };
    return callByCall(size, plugin, send, [send, answers](std::size_t device) {
        send(device);
        std::list<QString> copies;
        for (const QString& text : answers[device]) {
            copies.push_back(deepCopy(text));
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
        },
        clientsOf);
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
        },
        infoOf);
}

} // namespace

void addDeviceClients(Comparisons& comparisons, LazyStores& stores) {
    addForSizes(comparisons, stores, "clients GetDeviceClients", readGoals, getDeviceClients);
    addForSizes(comparisons, stores, "clients GetDeviceInfo", readGoals, getDeviceInfo);
}

} // namespace bench
