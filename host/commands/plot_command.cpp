#include "host/plot/plot_command.h"

#include "host/command_line/devices.h"
#include "host/command_line/record_options.h"
#include "host/command_line/text_options.h"
#include "host/commands/commands.h"

#include <map>
#include <memory>

namespace host {

namespace {

const std::map<std::string, Per> portionNames = {{"hour", Per::Hour}, {"day", Per::Day}};

} // namespace

void addPlotCommand(CommandLine& line) {
    const auto options = std::make_shared<PlotOptions>();
    options->readingsFile = dataFile(QStringLiteral("meter_readings.ndjson"));
    auto& command = line.add(
        {.name = "plot",
         .description = "Draws the numbers of OBIS codes over time, as SVG and PNG; a line has a "
                        "gap where nothing came for more than three times the usual distance of "
                        "two values",
         .examples =
             "kelvro-host plot --device 1001 --obis 1-0:1.7.0 --since 1d --output power\n"
             "kelvro-host plot --device 1001 --obis 1-0:1.8.0 --per day --since 4w --local\n"
             "kelvro-host plot --device 1001,1002 --obis 1-0:1.7.0,1-0:32.7.0 --since 2h --ascii"},
        [options](Session& session) {
            runPlot(*options, session);
            return ExitStatus::Done;
        });
    addDevices(command, options->devices)
        ->required(false)
        ->description("Device number; more than one as 1001,1002; default: the meter of the demo");
    addFile(command, "--readings", options->readingsFile,
            "The readings that the demo has stored, for the number of their meter; default: those "
            "that come with this program")
        ->default_str("");
    addObisCodes(command, options->obisCodes,
                 "OBIS code; values of one unit share an axis, and there are two axes")
        ->default_str("1-0:1.7.0");
    addPeriodOptions(command, options->period);
    command
        .add_option(
            "--per", options->per,
            "Draw what registers have counted in each whole hour or day: the difference of "
            "what they stood at when it ended and began, interpolated between the readings "
            "before and after if these are no more than one and a half hours or days apart. "
            "Hours and days without such readings, and those in which a register went back, "
            "are shown as such")
        ->transform(CLI::CheckedTransformer(portionNames).description(""))
        ->type_name("hour|day");
    addLimit(command, "--limit", options->limit, "How many of the newest values of each curve");
    line.addZoneOption(command);
    auto* const output =
        addText(command, "--output", options->fileBase,
                "Files to write, without .svg and .png; with one of them, only that file");
    command
        .add_flag("--ascii", options->ascii,
                  "Draw with characters on the terminal, and write no files")
        ->excludes(output);
}

} // namespace host
