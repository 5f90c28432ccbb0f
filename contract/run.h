#pragma once

#include "contract/command_line.h"

#include <ostream>

namespace contract {

/// Tries the selected rules and prints what became of them. True if none failed. Throws
/// std::runtime_error, before anything is stored, if there is no plug-in file, the settings cannot
/// be read or devices to work with have records already.
bool run(const CommandLine& given, std::ostream& output);

} // namespace contract
