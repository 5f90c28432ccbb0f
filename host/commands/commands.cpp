#include "host/commands/commands.h"

namespace host {

void addCommands(CommandLine& line) {
    addPlotCommand(line);
    addDemoCommand(line);
    addShellCommands(line);
}

} // namespace host
