#include "bench/device_client_contests.h"

#include <algorithm>
#include <iterator>
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

/// The raw side sends the commands that `commandsFor(device)` gives; the floor also makes the texts
/// of the answer.
template <typename CommandsFor>
Contest askForEach(Stores& stores, std::size_t size, const Call& plugin, CommandsFor commandsFor,
                   std::list<QByteArray> (*answerOf)(std::size_t device)) {
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

Prepare storedFirst(Contest (*contest)(Stores& stores, std::size_t size)) {
    return [contest](Stores& stores, std::size_t size) {
        storeClients(stores.emptyRedis(Stores::clientDb), 0, size);
        return contest(stores, size);
    };
}

} // namespace

void storeClients(RawRedis& redis, std::size_t begin, std::size_t end) {
    for (std::size_t device = begin; device < end; ++device) {
        const auto clients = clientsOf(device);
        QList<QByteArray> add{"SADD", keyOf("clients", device)};
        std::ranges::copy(clients, std::back_inserter(add));
        redis.run(add);
        const auto info = infoOf(device);
        redis.run({"HSET", keyOf("properties", device), "hw_type", info.front(), "protocol",
                   info.back()});
    }
}

Contest deviceClientsContest(Stores& stores, std::size_t size) {
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

Contest deviceInfoContest(Stores& stores, std::size_t size) {
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

void addDeviceClients(Comparisons& comparisons, LazyStores& stores) {
    addForSizes(comparisons, stores, "clients GetDeviceClients", readGoals,
                storedFirst(deviceClientsContest));
    addForSizes(comparisons, stores, "clients GetDeviceInfo", readGoals,
                storedFirst(deviceInfoContest));
}

} // namespace bench
