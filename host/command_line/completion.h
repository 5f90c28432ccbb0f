#pragma once

#include <CLI/CLI.hpp>

#include <string>

namespace host {

/// A script for bash that completes the program's commands, options and file names, made from its
/// command line. For `source`, or a file NAME in a folder that bash-completion reads.
std::string bashCompletion(const CLI::App& app);

} // namespace host
