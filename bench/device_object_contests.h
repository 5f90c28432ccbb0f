#pragma once

#include "bench/store_contests.h"

#include <hiredis/hiredis.h>

#include <QByteArray>
#include <QString>

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

/// The comparisons that the driver state and the downlink queues have in common: one JSON text a
/// device in Redis and a copy of it in MongoDB.
namespace bench {

/// What the plug-in does with the object of a device, and the least that Qt takes for the texts and
/// objects in it: the floor does that beside what the raw side does.
struct DeviceCalls {
    std::function<void(int device, bool persist)> push;
    std::function<void(int device)> pull;
    /// Makes the text that is stored. There may be none: then pushing has no floor.
    std::function<void(int device)> write;
    /// Makes the object that was read from Redis' text, and from its copy.
    std::function<void(int device, const redisReply& text)> read;
    std::function<void(int device)> readCopy;
};

/// One kind of such objects.
struct DeviceObjects {
    std::string name;
    int db = 0;
    std::string_view copies;
    /// The key in Redis.
    std::function<QByteArray(int device)> keyOf;
    Goals pushGoals;
    Goals pullGoals;
    /// Makes the objects of the devices 0…size-1, for push to store.
    std::function<DeviceCalls(Stores& stores, std::size_t size)> make;
};

/// Driver states, under the prefix "bench:state".
DeviceObjects stateObjects();
DeviceObjects queueObjects();

/// The commands of the raw side.
struct RawObjects;

/// The objects of some devices, as either side stores and reads them.
struct StoredObjects {
    DeviceCalls plugin;
    std::shared_ptr<const RawObjects> raw;
    std::size_t size = 0;
};

/// Takes for the raw side what the plug-in has stored of the devices 0…size-1: so both sides store
/// the same.
StoredObjects storedObjects(Stores& stores, const DeviceObjects& objects,
                            const RawCollectionPtr& copies, const DeviceCalls& plugin,
                            std::size_t size);

Contest pushContest(const StoredObjects& stored, bool persist);
/// From the copies there must be no objects of these devices in Redis.
Contest pullContest(const StoredObjects& stored, bool fromCopy);

/// Reads the states under "bench:KIND", of the devices 0…size-1.
Contest allStatesContest(Stores& stores, const QString& kind, std::size_t size);

/// Push and Pull, with the copy and without it.
void addDeviceObjects(Comparisons& comparisons, LazyStores& stores, const DeviceObjects& objects);

/// Has the plug-in store the objects of the devices 0…size-1 where there were none.
DeviceCalls storeObjects(Stores& stores, const DeviceObjects& objects, std::size_t size,
                         bool persist);

} // namespace bench
