#include "host/commands/commands.h"
#include "host/query/value_query.h"

#include <memory>

namespace host {

namespace {

struct ValuesOptions {
    ValueQuery query;
    bool firstLast = false;
    bool latest = false;
};

void showThem(const ValuesOptions& options, Session& session) {
    if (options.latest) {
        showLatest(options.query, session);
    } else if (options.firstLast) {
        showFirstAndLast(options.query, session);
    } else {
        showValues(options.query, session);
    }
}

} // namespace

void addValuesCommand(CommandLine& line) {
    const auto options = std::make_shared<ValuesOptions>();
    auto& query = options->query;
    auto& command = line.add(
        {.name = "values",
         .description = "Shows the values of devices, newest first over all devices",
         .examples = "kelvro-host values --device 1001 --obis 1-0:1.8.0 --since 1d\n"
                     "kelvro-host values --device 1001,1002 --latest\n"
                     "kelvro-host values --device 1001 --obis 1-0:1.8.0 --first-last --csv"},
        [options](Session& session) {
            showThem(*options, session);
            return ExitStatus::Done;
        });
    auto* const limit = addQueryOptions(command, query);
    auto* const obis = addObisCodes(command, query.obisCodes, "Only values of this OBIS code");
    addTexts(command, "--tag", query.tags, "Only values with this tag; may be given repeatedly");
    auto* const firstLast = command.add_flag(
        "--first-last", options->firstLast,
        "Of each device and each code of --obis the newest number and, after it, the oldest; the "
        "same one twice if there is only one");
    firstLast->needs(obis)->excludes(limit);
    auto* const latest = command.add_flag(
        "--latest", options->latest,
        "Of each device and code the newest value, by device and code. Without --obis, the codes "
        "are those of the device's newest values (--depth)");
    latest->excludes(limit)->excludes(firstLast);
    addLimit(
        command, "--depth", query.depth,
        "How many of a device's newest values --latest looks through, where no codes are given")
        ->needs(latest)
        ->excludes(obis);
    line.addOutputOptions(command);
}

} // namespace host
