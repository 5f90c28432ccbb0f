#pragma once

#include <string>
#include <vector>

namespace foreign_host {

/// Names of this host's functions that were called although only the plug-in could have meant them.
const std::vector<std::string>& calls();

} // namespace foreign_host
