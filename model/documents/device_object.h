#pragma once

#include "model/bson/record_reader.h"
#include "model/documents/index_layout.h"

#include <bsoncxx/v1/document/value.hpp>

#include <QJsonObject>

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

namespace bson_utils {

/// A device's driver state or downlink queues, as they are kept.
struct device_object {
    /// Device number.
    int modem_id = 0;
    QJsonObject state;
};

/// What an update sets. Throws as toBson(const QJsonObject&).
bsoncxx::v1::document::value toBson(const device_object& object);

/// For ordinary_fields and legacy_fields.
template <typename Fields>
void read(Fields& fields, device_object& object);

} // namespace bson_utils
