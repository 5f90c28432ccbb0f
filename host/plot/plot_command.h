#pragma once

#include "host/command_line/times.h"
#include "host/plot/consumption.h"
#include "host/session/session.h"

#include <QString>

#include <list>
#include <optional>

namespace host {

struct PlotOptions {
    /// Where the device's number is taken from if none is given.
    QString readingsFile;
    std::list<int> devices;
    std::list<QString> obisCodes;
    Period period;
    /// Draws what the registers have counted in each, rather than what they stood at.
    std::optional<Per> per;
    /// The newest values of each device and code; 0 for all there are.
    int limit = 100'000;
    /// .svg or .png says that there is to be only this file.
    QString fileBase = QStringLiteral("power");
    /// Draws with characters and writes no files.
    bool ascii = false;
};

/// Asks the store for the values and draws them.
///
/// The MongoDB driver's process-wide instance must exist. Throws Failure if a file cannot be read
/// or written, if the server does not do its part, if there is nothing to draw, and if gnuplot is
/// not installed. Blocks on the server, and while gnuplot runs.
void runPlot(const PlotOptions& options, Session& session);

} // namespace host
