#pragma once

#include "bench/store_contests.h"

#include <QByteArray>

#include <functional>
#include <memory>
#include <string>
#include <vector>

/// What the comparisons of the driver state and of the downlink queues have in common: one JSON
/// text a device in Redis and a copy of it in MongoDB.
namespace bench {

/// Where the copies of a device are, and the commands and documents that the baseline sends for it.
///
/// They are what the plug-in itself has stored, so both sides store the same. Without copies there
/// are no queries and no updates.
struct StoredDevices {
    RawRedis* redis = nullptr;
    std::shared_ptr<mongocxx::v1::collection> copies;
    std::vector<std::string> gets;
    std::vector<std::string> sets;
    Documents queries;
    Documents updates;
};

enum class Copies { none, kept };

/// Empties the Redis database and the collection, has `push(device)` store the devices 0…size-1,
/// with copies if they are wanted, and looks at what is there. `keyOf(device)` is the key in Redis.
std::shared_ptr<StoredDevices> storeDevices(Stores& stores, int db, std::string_view collection,
                                            std::size_t size, Copies copies,
                                            const std::function<void(int device)>& push,
                                            const std::function<QByteArray(int device)>& keyOf);

/// Each the baseline of one operation, for the device of the index.
Call rawSet(const std::shared_ptr<StoredDevices>& devices);
Call rawSetAndUpdate(const std::shared_ptr<StoredDevices>& devices);
Call rawGet(const std::shared_ptr<StoredDevices>& devices);
Call rawGetAndFind(const std::shared_ptr<StoredDevices>& devices);

} // namespace bench
