#pragma once

#include "model/documents/index_layout.h"

/// The two collections of durable copies, one document per device. Frozen: stores in the field
/// hold these documents.
///
///     key     BSON type  meaning
///     "_id"   int32      device number
///     "state" document   the stored object: every number a double, nulls left out
///
/// Besides the server's own index, "_id" has a hashed one.
namespace layout {

namespace states {
inline constexpr std::string_view collection = "states";
}

namespace dl_queues {
inline constexpr std::string_view collection = "dl_queues";
}

namespace persistent {
inline constexpr std::string_view id = "_id";
inline constexpr std::string_view state = "state";

inline constexpr std::array<index, 1> indexes{{
    {.keys = {{{id, index_order::hashed}}}},
}};
} // namespace persistent

} // namespace layout
