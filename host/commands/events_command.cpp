#include "host/commands/commands.h"
#include "host/query/event_query.h"

#include <memory>

namespace host {

void addEventsCommand(CommandLine& line) {
    const auto query = std::make_shared<EventQuery>();
    auto& command =
        line.add({.name = "events",
                  .description = "Shows the events of devices, newest first over all devices",
                  .examples = "kelvro-host events --device 1001 --since 7d --text 'cover opened'"},
                 [query](Session& session) {
                     showEvents(*query, session);
                     return ExitStatus::Done;
                 });
    addQueryOptions(command, *query);
    addTexts(command, "--text", query->texts,
             "Only events with this whole text; may be given repeatedly");
    line.addOutputOptions(command);
}

} // namespace host
