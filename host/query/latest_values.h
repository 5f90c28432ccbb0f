#pragma once

#include "model/dev_value.h"

#include <list>
#include <vector>

namespace host {

/// The newest value of each OBIS code, by code. `newestFirst` are values of one device.
std::vector<model::dev_value> latestOfEachCode(const std::list<model::dev_value>& newestFirst);

} // namespace host
