#pragma once

#include <CLI/CLI.hpp>

#include <list>

namespace host {

/// --device with one or more device numbers, as 1001 or 1001,1002, which may be given repeatedly.
/// At least one must be.
CLI::Option* addDevices(CLI::App& command, std::list<int>& devices);

/// The argument DEVICE of a command that is about one device.
CLI::Option* addDevice(CLI::App& command, int& device);

} // namespace host
