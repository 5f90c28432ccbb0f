#pragma once

#include <array>
#include <string_view>

namespace layout {

/// Direction of one key of an index.
enum class index_order : int { hashed = 0, ascending = 1, descending = -1 };

struct index_key {
    std::string_view field;
    index_order order = index_order::ascending;
};

/// One index of a collection. Unused keys have an empty field name. The server names the index.
struct index {
    std::array<index_key, 4> keys{};
    /// The server removes a document this long after the date in the indexed field.
    bool expires = false;
};

/// Key of a document that the MongoDB driver gives an ObjectId.
inline constexpr std::string_view server_id = "_id";

/// Grace period of every expiring index: a document's own "ttl" date decides its lifetime.
inline constexpr int expire_after_seconds = 60;

} // namespace layout
