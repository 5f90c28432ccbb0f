#pragma once

#include "host/command_line/command_line.h"

namespace host {

/// Every command of the program, in the order of its help.
void addCommands(CommandLine& line);

void addDemoCommand(CommandLine& line);
void addPlotCommand(CommandLine& line);
/// What is made from the command line: completion and the manual page.
void addShellCommands(CommandLine& line);

} // namespace host
