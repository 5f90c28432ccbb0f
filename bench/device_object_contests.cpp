#include "bench/device_object_contests.h"

#include "model/documents/device_object.h"
#include "mongo/query.h"

#include <bsoncxx/v1/types/view.hpp>
#include <hiredis/hiredis.h>
#include <mongocxx/v1/cursor.hpp>
#include <mongocxx/v1/update_one_options.hpp>
#include <mongocxx/v1/update_one_result.hpp>

#include <stdexcept>
#include <utility>

namespace bench {

/// Without copies there are no queries and no updates.
struct RawObjects {
    RawRedis& redis;
    RawCollectionPtr copies;
    std::vector<std::string> gets;
    std::vector<std::string> sets;
    Documents queries;
    Documents updates;
};

namespace {

namespace field = layout::persistent;
using bson_utils::bson_builder;

bsoncxx::v1::document::value queryById(int device) {
    bson_builder query;
    query.appendInt32(field::id, device);
    return query.take();
}

bsoncxx::v1::document::value update(int device, const bsoncxx::v1::document::view& state) {
    bson_builder update;
    update.appendDocument("$set", [&](bson_builder& set) {
        set.appendInt32(field::id, device);
        set.appendDocument(field::state, state);
    });
    return update.take();
}

void readTexts(RawRedis& redis, const DeviceObjects& objects, std::size_t size, RawObjects& raw) {
    for (int device = 0; std::cmp_less(device, size); ++device) {
        const QByteArray key = objects.keyOf(device);
        const auto text = redis.run({"GET", key});
        if (text->type != REDIS_REPLY_STRING) {
            throw std::runtime_error("the plug-in has not stored the device's object in Redis");
        }
        const QByteArray json(text->str, static_cast<int>(text->len));
        raw.gets.push_back(RawRedis::wire({"GET", key}));
        raw.sets.push_back(RawRedis::wire({"SET", key, json}));
    }
}

void readCopies(RawObjects& raw, std::size_t size) {
    auto cursor = raw.copies->unmeasured.find(
        bsoncxx::v1::document::view{}, mongo::oldestFirst(field::id, static_cast<int>(size)));
    for (const auto& copy : cursor) {
        const int device = copy[field::id].get_int32().value;
        raw.queries.push_back(queryById(device));
        raw.updates.push_back(update(device, copy[field::state].get_document().value));
    }
}

StoredObjects prepare(Stores& stores, const DeviceObjects& objects, std::size_t size,
                      bool persist) {
    const auto copies = stores.emptyCollection(objects.copies, field::indexes);
    const auto plugin = storeObjects(stores, objects, size, persist);
    copies->require(persist ? size : 0);
    return storedObjects(stores, objects, copies, plugin, size);
}

Contest push(Stores& stores, const DeviceObjects& objects, std::size_t size, bool persist) {
    return pushContest(prepare(stores, objects, size, persist), persist);
}

Contest pull(Stores& stores, const DeviceObjects& objects, std::size_t size, bool fromCopy) {
    const auto stored = prepare(stores, objects, size, fromCopy);
    if (fromCopy) {
        stores.emptyRedis(objects.db);
    }
    return pullContest(stored, fromCopy);
}

} // namespace

StoredObjects storedObjects(Stores& stores, const DeviceObjects& objects,
                            const RawCollectionPtr& copies, const DeviceCalls& plugin,
                            std::size_t size) {
    RawObjects raw{stores.rawRedis(objects.db), copies, {}, {}, {}, {}};
    readTexts(stores.otherRedis(objects.db), objects, size, raw);
    readCopies(raw, size);
    return {plugin, std::make_shared<const RawObjects>(std::move(raw)), size};
}

Contest pushContest(const StoredObjects& stored, bool persist) {
    const auto& [plugin, raw, size] = stored;
    mongocxx::v1::update_one_options upsert;
    upsert.upsert(true);
    const Call store = [raw = raw, persist, upsert](std::size_t i) {
        raw->redis.send(raw->sets[i]);
        if (persist) {
            raw->copies->measured.update_one(raw->queries[i], raw->updates[i], upsert);
        }
    };
    const Call writeAndStore = [store, write = plugin.write](std::size_t i) {
        write(static_cast<int>(i));
        store(i);
    };
    return callByCall(
        size, [push = plugin.push, persist](std::size_t i) { push(static_cast<int>(i), persist); },
        store, plugin.write ? writeAndStore : nullptr);
}

Contest pullContest(const StoredObjects& stored, bool fromCopy) {
    const auto& [plugin, raw, size] = stored;
    const auto fetch = [raw = raw, fromCopy](std::size_t i) {
        auto text = raw->redis.send(raw->gets[i]);
        if (fromCopy) {
            raw->copies->measured.find_one(raw->queries[i]);
        }
        return text;
    };
    return callByCall(
        size, [pull = plugin.pull](std::size_t i) { pull(static_cast<int>(i)); }, fetch,
        [fetch, fromCopy, plugin = plugin](std::size_t i) {
            const int device = static_cast<int>(i);
            const auto text = fetch(i);
            if (fromCopy) {
                plugin.readCopy(device);
            } else {
                plugin.read(device, *text);
            }
        });
}

DeviceCalls storeObjects(Stores& stores, const DeviceObjects& objects, std::size_t size,
                         bool persist) {
    stores.emptyRedis(objects.db);
    const auto calls = objects.make(stores, size);
    for (int device = 0; std::cmp_less(device, size); ++device) {
        calls.push(device, persist);
    }
    return calls;
}

void addDeviceObjects(Comparisons& comparisons, LazyStores& stores, const DeviceObjects& objects) {
    const auto with = [objects](auto prepare, bool copy) {
        return [=](Stores& connected, std::size_t size) {
            return prepare(connected, objects, size, copy);
        };
    };
    const std::string& name = objects.name;
    addForSizes(comparisons, stores, name + " Push", objects.pushGoals, with(push, false));
    addForSizes(comparisons, stores, name + " Push persist", writeGoals, with(push, true));
    addForSizes(comparisons, stores, name + " Pull", objects.pullGoals, with(pull, false));
    addForSizes(comparisons, stores, name + " Pull from copy", readGoals, with(pull, true));
}

} // namespace bench
