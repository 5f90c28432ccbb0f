#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace host {

/// The program's manual page for section 1, in the man(7) macros, made from its command line.
/// `version` stands in its footer.
std::string manualPage(const CLI::App& app, const std::string& version);

} // namespace host
