#pragma once

#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"

#include <bsoncxx/v1/document/view.hpp>

/// The readers of stored downlinks, values and events in their plain form: libbson renders legacy
/// extended JSON text, Qt parses it, the members are picked from the object. Slow and obvious; the
/// readers that ship must give the same for every document.
namespace legacy_text {

model::dl_message readDL(const bsoncxx::v1::document::view& document);
model::dev_value readValue(const bsoncxx::v1::document::view& document);
model::dev_event readEvent(const bsoncxx::v1::document::view& document);

} // namespace legacy_text
