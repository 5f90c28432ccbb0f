#include "host/command_line/devices.h"
#include "host/command_line/times.h"
#include "host/commands/commands.h"
#include "host/watch/watch.h"

#include <memory>

namespace host {

void addWatchCommand(CommandLine& line) {
    const auto options = std::make_shared<WatchOptions>();
    auto& command = line.add(
        {.name = "watch",
         .description =
             "Shows the newest uplinks, values and events of devices on the whole terminal, "
             "and how many come in a minute. Keys: 1, 2, 3 or Tab choose the list, / filters "
             "it by a text (Enter keeps it, Escape takes it back), p pauses, q quits",
         .examples = "kelvro-host watch --device 1001,1002 --every 5s"},
        [options](Session& session) { return runWatch(*options, session); });
    addDevices(command, options->devices);
    addDuration(command, "--every", options->everySecs, "Ask the stores so often")
        ->default_str("2s");
}

} // namespace host
