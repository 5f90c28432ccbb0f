#pragma once

#include <CLI/CLI.hpp>
#include <QDateTime>
#include <QString>

#include <optional>
#include <string>

namespace host {

/// An instant in ISO 8601, as 2026-11-22T10:00:00Z, 2026-11-22T11:00+01:00 or 2026-11-22. In this
/// machine's zone if it names none; a date alone is its first second, or its last one if
/// `endOfDay`. Empty for anything else.
std::optional<QDateTime> parseTime(const QString& text, bool endOfDay = false);

/// Which time a command is about; both ends belong to it. All time unless options say otherwise.
struct Period {
    Period();

    QDateTime begin;
    QDateTime end;
};

/// --from and --to as parseTime() reads them, and --since with a length as 90s, 30m, 2h, 7d or 4w.
void addPeriodOptions(CLI::App& command, Period& period);

/// An option with an instant.
CLI::Option* addTime(CLI::App& command, const std::string& name, QDateTime& time,
                     const std::string& description, bool endOfDay = false);

/// An option with a length of time, in seconds; written as for --since.
CLI::Option* addDuration(CLI::App& command, const std::string& name, qint64& secs,
                         const std::string& description);

} // namespace host
