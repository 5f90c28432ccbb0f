#include "host/command_line/text_options.h"
#include "host/commands/commands.h"
#include "host/demo/demo.h"

#include <map>
#include <memory>

namespace host {

namespace {

const std::map<std::string, DecoderChoice> decoderNames = {
    {"auto", DecoderChoice::Auto},
    {"wmbusmeters", DecoderChoice::Wmbusmeters},
    {"shipped", DecoderChoice::Shipped},
};

} // namespace

void addDemoCommand(CommandLine& line) {
    const auto options = std::make_shared<DemoOptions>();
    options->telegramsFile = dataFile(QStringLiteral("radio_telegrams.ndjson"));
    options->readingsFile = dataFile(QStringLiteral("meter_readings.ndjson"));
    auto& command =
        line.add({.name = "demo",
                  .description = "Sends the telegrams and readings of real meters through the "
                                 "plug-in and compares what comes back",
                  .examples = "kelvro-host demo"},
                 [options](Session& session) {
                     return runDemo(*options, session) ? ExitStatus::Done : ExitStatus::Failed;
                 });
    addFile(command, "--input", options->telegramsFile,
            "Telegrams, one JSON object a line; default: those that come with this program")
        ->default_str("");
    addFile(command, "--readings", options->readingsFile,
            "Readings of an electricity meter, one JSON object a line; default: those that come "
            "with this program")
        ->default_str("");
    addChoice(command, "--decoder", options->decoder, decoderNames,
              "Where the telegrams' readings come from");
    command.add_flag("--clear", options->clear,
                     "Store nothing, but delete what an earlier demo stored of the same meters");
}

} // namespace host
