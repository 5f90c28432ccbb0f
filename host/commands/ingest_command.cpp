#include "host/command_line/text_options.h"
#include "host/command_line/times.h"
#include "host/commands/commands.h"
#include "host/ingest/ingest.h"

#include <memory>

namespace host {

void addIngestCommand(CommandLine& line) {
    const auto options = std::make_shared<IngestOptions>();
    auto& command = line.add(
        {.name = "ingest",
         .description =
             "Stores telegrams and readings, one JSON object a line: {\"telegram\", \"decoded\"}, "
             "{\"time\", \"obis\", \"value\", \"unit\"}, or what wmbusmeters prints. Of a telegram "
             "it stores an uplink, a value for each number among the readings, and an event for "
             "each "
             "word of the meter's status. What is there already is not stored again: an uplink is "
             "there if one of the same device, time and content is, a reading if one of the same "
             "device, time and code is. Ended in the middle, it may be given the same lines again. "
             "While a server is away it waits",
         .examples = "kelvro-host ingest telegrams.ndjson --rejects rejected.ndjson\n"
                     "wmbusmeters --silent --format=json --logtelegrams --usestdoutforlogging "
                     "rtlwmbus Meter auto '*' NOKEY | kelvro-host ingest\n"
                     "kelvro-host ingest --follow /var/log/meters.ndjson"},
        [options](Session& session) { return runIngest(*options, session); });
    line.addOutputOptions(command);
    command
        .add_option("FILE", options->files,
                    "Files to read, one after the other; - is the standard input")
        ->type_name("FILE")
        ->default_str("-");
    auto* const follow =
        command.add_flag("--follow", options->follow,
                         "Read on where the file grows, until interrupted; one FILE only");
    command.parse_complete_callback([options, follow] {
        if (options->follow && options->files.size() > 1) {
            throw CLI::ValidationError(follow->get_name(), "only one FILE can be followed");
        }
    });
    command.add_option("--batch", options->batchLines, "Store so many lines together")
        ->check(CLI::Range(1, 100'000).description(""))
        ->capture_default_str()
        ->type_name("NUMBER");
    addDuration(command, "--flush-after", options->flushAfterSecs,
                "Store what has come after so long, as 1s or 1m")
        ->default_str("1s");
    addFile(command, "--rejects", options->rejectsFile,
            "Add rejected lines to this file, with the reason, one JSON object a line");
    command
        .add_option("--device", options->device,
                    "Device number of readings; default: that of the serial number among them")
        ->type_name("DEVICE");
    addDuration(command, "--keep", options->keepSecs,
                "How long the server keeps what is stored now, as 52w")
        ->default_str("3650d");
}

} // namespace host
