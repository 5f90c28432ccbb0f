#pragma once

#include "model/bson/record_reader.h"
#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/message.h"

#include <bsoncxx/v1/document/value.hpp>
#include <bsoncxx/v1/document/view.hpp>

/// Records to BSON and back by way of JSON text: what the codecs are measured against. For
/// documents as the product writes them it gives the same.
namespace bench::text_path {

/// The product's own plain reader goes this way.
template <typename Record>
Record read(const bsoncxx::v1::document::view& document) {
    return bson_utils::readPlain<Record>(document);
}

/// That of uplinks does not: it takes value by value.
template <>
model::message read(const bsoncxx::v1::document::view& document);

/// A JSON object with extended-JSON wrappers for the dates and numbers that need them, rendered by
/// Qt and parsed by libbson. The members stand in the order of their keys.
bsoncxx::v1::document::value write(const model::message& message);
bsoncxx::v1::document::value write(const model::dl_message& message);
bsoncxx::v1::document::value write(const model::dev_value& value);
bsoncxx::v1::document::value write(const model::dev_event& event);

} // namespace bench::text_path
