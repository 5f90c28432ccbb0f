#include "host/plot/plot_command.h"

#include "host/commands/commands.h"

#include <memory>

namespace host {

void addPlotCommand(CommandLine& line) {
    const auto options = std::make_shared<PlotOptions>();
    options->readingsFile = dataFile(QStringLiteral("meter_readings.ndjson"));
    auto& command = line.add(
        {.name = "plot",
         .description = "Draws the stored values of an OBIS code over time, as SVG and PNG",
         .examples = "kelvro-host plot --device 1001 --obis 1-0:1.7.0 --output power"},
        [options](Session& session) {
            runPlot(*options, session);
            return ExitStatus::Done;
        });
    command.add_option("--device", options->device,
                       "Device number; default: the one of the readings");
    addFile(command, "--readings", options->readingsFile,
            "Readings of an electricity meter, one JSON object a line");
    addText(command, "--obis", options->obisCode, "OBIS code");
    addText(command, "--output", options->fileBase, "Files to write, without .svg and .png");
}

} // namespace host
