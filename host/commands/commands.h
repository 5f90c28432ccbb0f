#pragma once

#include "host/command_line/command_line.h"

namespace host {

/// Every command of the program, in the order of its help.
void addCommands(CommandLine& line);

void addUplinksCommand(CommandLine& line);
void addValuesCommand(CommandLine& line);
void addEventsCommand(CommandLine& line);
/// commands, command issue, ack, list and show.
void addDownlinkCommands(CommandLine& line);
void addStateCommands(CommandLine& line);
void addQueueCommands(CommandLine& line);
void addClientsCommand(CommandLine& line);
void addIngestCommand(CommandLine& line);
void addWatchCommand(CommandLine& line);
void addPlotCommand(CommandLine& line);
void addDoctorCommand(CommandLine& line);
/// Export and import.
void addTransferCommands(CommandLine& line);
void addBenchCommand(CommandLine& line);
void addDemoCommand(CommandLine& line);
/// What is made from the command line: completion and the manual page.
void addShellCommands(CommandLine& line);

} // namespace host
