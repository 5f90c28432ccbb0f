#include "bench/redis_contests.h"

#include "model/documents/device_object.h"
#include "mongo/query.h"

#include <bsoncxx/v1/types/view.hpp>
#include <hiredis/hiredis.h>
#include <mongocxx/v1/update_one_options.hpp>
#include <mongocxx/v1/update_one_result.hpp>

#include <stdexcept>
#include <utility>

namespace bench {

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

} // namespace

std::shared_ptr<StoredDevices> storeDevices(Stores& stores, int db, std::string_view collection,
                                            std::size_t size, Copies copies,
                                            const std::function<void(int device)>& push,
                                            const std::function<QByteArray(int device)>& keyOf) {
    auto devices = std::make_shared<StoredDevices>();
    RawRedis& redis = stores.emptyRedis(db);
    auto stored = stores.fresh(collection, field::indexes);
    devices->redis = &stores.rawRedis(db);
    devices->copies = std::make_shared<mongocxx::v1::collection>(stores.raw(collection));
    for (int device = 0; std::cmp_less(device, size); ++device) {
        push(device);
        const QByteArray key = keyOf(device);
        const auto text = redis.run({"GET", key});
        if (text->type != REDIS_REPLY_STRING) {
            throw std::runtime_error("the plug-in has not stored the device's object in Redis");
        }
        const QByteArray json(text->str, static_cast<int>(text->len));
        devices->gets.push_back(RawRedis::wire({"GET", key}));
        devices->sets.push_back(RawRedis::wire({"SET", key, json}));
    }
    requireDocuments(stored, copies == Copies::kept ? size : 0);
    auto cursor = stored.find(bsoncxx::v1::document::view{}, mongo::oldestFirst(field::id, 0));
    for (const auto& copy : cursor) {
        const int device = copy[field::id].get_int32().value;
        devices->queries.push_back(queryById(device));
        devices->updates.push_back(update(device, copy[field::state].get_document().value));
    }
    return devices;
}

Call rawSet(const std::shared_ptr<StoredDevices>& devices) {
    return [devices](std::size_t index) { devices->redis->send(devices->sets[index]); };
}

Call rawSetAndUpdate(const std::shared_ptr<StoredDevices>& devices) {
    mongocxx::v1::update_one_options options;
    options.upsert(true);
    return [devices, options](std::size_t index) {
        devices->redis->send(devices->sets[index]);
        devices->copies->update_one(devices->queries[index], devices->updates[index], options);
    };
}

Call rawGet(const std::shared_ptr<StoredDevices>& devices) {
    return [devices](std::size_t index) { devices->redis->send(devices->gets[index]); };
}

Call rawGetAndFind(const std::shared_ptr<StoredDevices>& devices) {
    return [devices](std::size_t index) {
        devices->redis->send(devices->gets[index]);
        devices->copies->find_one(devices->queries[index]);
    };
}

} // namespace bench
