#include "host/commands/commands.h"
#include "host/query/uplink_query.h"

#include <memory>

namespace host {

void addUplinksCommand(CommandLine& line) {
    const auto query = std::make_shared<UplinkQuery>();
    auto& command = line.add(
        {.name = "uplinks",
         .description = "Shows the uplinks of devices, newest first over all devices",
         .examples = "kelvro-host uplinks --device 1001,1002 --since 2h\n"
                     "kelvro-host uplinks --device 1001 --from 2026-11-22 --limit 0 --json"},
        [query](Session& session) {
            showUplinks(*query, session);
            return ExitStatus::Done;
        });
    addQueryOptions(command, *query);
    auto* const tag = addTexts(command, "--tag", query->tags,
                               "Only uplinks with this tag; may be given repeatedly");
    command
        .add_flag(
            "--detected", query->detected,
            "Let the period and the order be of the time when a base station heard the uplink; "
            "tags cannot be asked for then")
        ->excludes(tag);
    line.addOutputOptions(command);
}

} // namespace host
