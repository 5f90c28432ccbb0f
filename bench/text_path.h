#pragma once

#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/message.h"

#include <bsoncxx/v1/document/value.hpp>
#include <bsoncxx/v1/document/view.hpp>

/// The plain way between records and BSON, by way of JSON text: what the codecs are measured
/// against. For documents with the types that the writers write, it gives the same.
///
/// The readers of downlink commands, values and events by text are the product's own plain ones.
namespace bench::text_path {

/// libbson renders legacy extended JSON, Qt parses it, the members are picked one by one.
model::message readUL(const bsoncxx::v1::document::view& document);

/// A JSON object with extended-JSON wrappers for the dates and numbers that need them, rendered by
/// Qt and parsed by libbson. The members stand in the order of their keys.
bsoncxx::v1::document::value write(const model::message& message);
bsoncxx::v1::document::value write(const model::dl_message& message);
bsoncxx::v1::document::value write(const model::dev_value& value);
bsoncxx::v1::document::value write(const model::dev_event& event);

} // namespace bench::text_path
