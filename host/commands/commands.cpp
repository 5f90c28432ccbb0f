#include "host/commands/commands.h"

namespace host {

void addCommands(CommandLine& line) {
    addUplinksCommand(line);
    addValuesCommand(line);
    addEventsCommand(line);
    addDownlinkCommands(line);
    addStateCommands(line);
    addQueueCommands(line);
    addClientsCommand(line);
    addIngestCommand(line);
    addWatchCommand(line);
    addPlotCommand(line);
    addDoctorCommand(line);
    addTransferCommands(line);
    addBenchCommand(line);
    addDemoCommand(line);
    addShellCommands(line);
}

} // namespace host
