#pragma once

#include <CLI/CLI.hpp>
#include <QString>

#include <list>
#include <string>

namespace host {

/// How many records a query shows unless its user says otherwise.
inline constexpr int usualLimit = 100;

/// An option with a number of records, 0 for all.
CLI::Option* addLimit(CLI::App& command, const std::string& name, int& limit,
                      const std::string& description);

/// --obis with one or more OBIS codes, as 1-0:1.8.0 or 1-0:1.8.0,1-0:2.8.0, which may be given
/// repeatedly.
CLI::Option* addObisCodes(CLI::App& command, std::list<QString>& codes,
                          const std::string& description);

/// An option with a text, which may be given repeatedly.
CLI::Option* addTexts(CLI::App& command, const std::string& name, std::list<QString>& texts,
                      const std::string& description);

} // namespace host
