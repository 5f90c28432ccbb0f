#include "mongo/store_layout.h"

#include "model/bson/bson_builder.h"

#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/database.hpp>

namespace mongo {

namespace {

bsoncxx::v1::document::value keysOf(const layout::index& index) {
    bson_utils::bson_builder keys;
    for (const layout::index_key& key : index.keys) {
        if (key.field.empty()) {
            break;
        }
        if (key.order == layout::index_order::hashed) {
            keys.appendUtf8(key.field, "hashed");
        } else {
            keys.appendInt32(key.field, static_cast<std::int32_t>(key.order));
        }
    }
    return keys.take();
}

bsoncxx::v1::document::value optionsOf(const layout::index& index) {
    bson_utils::bson_builder options;
    if (index.expires) {
        options.appendInt32("expireAfterSeconds", layout::expire_after_seconds);
    }
    return options.take();
}

} // namespace

void createIndexes(mongocxx::v1::collection& collection, std::span<const layout::index> indexes) {
    for (const layout::index& index : indexes) {
        collection.create_index(keysOf(index), optionsOf(index));
    }
}

void createStore(mongocxx::v1::database database,
                 std::initializer_list<collection_layout> collections) {
    if (database.has_collection(collections.begin()->name)) {
        return;
    }
    for (const auto& [name, indexes] : collections) {
        auto collection = database.collection(name);
        createIndexes(collection, indexes);
    }
}

} // namespace mongo
