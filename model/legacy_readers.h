#pragma once

#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"

#include <bsoncxx/v1/document/view.hpp>

namespace bson_utils {

model::dl_message fromBsonDL(const bsoncxx::v1::document::view& document);
model::dev_value fromBsonValue(const bsoncxx::v1::document::view& document);
model::dev_event fromBsonEvent(const bsoncxx::v1::document::view& document);

} // namespace bson_utils
