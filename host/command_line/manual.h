#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <utility>
#include <vector>

namespace host {

/// A section of a manual page: words, and what is to be said of each.
struct ManualSection {
    /// In capitals.
    std::string title;
    std::vector<std::pair<std::string, std::string>> entries;
};

/// What a manual page tells beside the command line.
struct ManualTexts {
    std::string version;
    /// What the program is for, as "work with files".
    std::string purpose;
    /// Stand at the end, in this order.
    std::vector<ManualSection> sections;
};

/// The program's manual page for section 1, in the man(7) macros, made from its command line: of
/// its commands, or of its options if it has none.
std::string manualPage(const CLI::App& app, const ManualTexts& texts);

/// The sections on where the settings are if --settings does not say it (findSettings()).
std::vector<ManualSection> settingsSections();

} // namespace host
