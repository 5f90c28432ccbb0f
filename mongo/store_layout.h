#pragma once

#include "model/documents/index_layout.h"

#include <mongocxx/v1/collection-fwd.hpp>

#include <span>
#include <string_view>

namespace mongo {

/// The one database of the driver. Deliberate: a database named in the connection string is not
/// used, so every host finds its data in the same place.
inline constexpr std::string_view databaseName = "kelvrostorage";

/// Creates the indexes in order, which creates the collection. Blocks: one request per index.
/// Throws mongocxx::v1::exception when the server refuses one; those before it stay.
void createIndexes(mongocxx::v1::collection& collection, std::span<const layout::index> indexes);

} // namespace mongo
