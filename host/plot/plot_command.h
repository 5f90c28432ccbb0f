#pragma once

#include "host/session/session.h"

#include <QString>

#include <optional>

namespace host {

struct PlotOptions {
    /// Where the device's number is taken from if it is not given.
    QString readingsFile;
    std::optional<int> device;
    QString obisCode = QStringLiteral("1-0:1.7.0");
    QString fileBase = QStringLiteral("power");
};

/// Asks the store for all values that a device has of an OBIS code and draws them into two files,
/// SVG and PNG.
///
/// The MongoDB driver's process-wide instance must exist. Throws Failure if a file cannot be read
/// or written, if the server does not do its part, if there are no values, and if gnuplot is not
/// installed. Blocks on the server.
void runPlot(const PlotOptions& options, Session& session);

} // namespace host
