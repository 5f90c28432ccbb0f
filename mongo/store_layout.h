#pragma once

#include "model/documents/index_layout.h"

#include <mongocxx/v1/collection-fwd.hpp>
#include <mongocxx/v1/database-fwd.hpp>

#include <initializer_list>
#include <span>
#include <string_view>

namespace mongo {

/// The one database of the driver. Deliberate: a database named in the connection string is not
/// used, so every host finds its data in the same place.
inline constexpr std::string_view databaseName = "kelvrostorage";

/// Creates the indexes in order, which creates the collection. Blocks: one request per index.
/// Throws mongocxx::v1::exception when the server refuses one; those before it stay.
void createIndexes(mongocxx::v1::collection& collection, std::span<const layout::index> indexes);

struct collection_layout {
    std::string_view name;
    std::span<const layout::index> indexes;
};

/// Creates the indexes of each collection in turn. Deliberate: if the first collection exists the
/// store counts as laid out, and the others are not looked at.
void createStore(mongocxx::v1::database database,
                 std::initializer_list<collection_layout> collections);

} // namespace mongo
