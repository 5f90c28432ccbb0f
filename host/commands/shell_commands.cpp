#include "host/command_line/completion.h"
#include "host/command_line/manual.h"
#include "host/commands/commands.h"

#include <QByteArray>

namespace host {

void addShellCommands(CommandLine& line) {
    line.addPlain({.name = "completion",
                   .description = "Prints a script that completes this program's words in bash",
                   .examples = "source <(kelvro-host completion)"},
                  [&line](Session& session) {
                      session.results().bytes(
                          QByteArray::fromStdString(bashCompletion(line.app())));
                      return ExitStatus::Done;
                  });
    line.addPlain({.name = "manual",
                   .description = "Prints this program's manual page",
                   .examples = "kelvro-host manual | man -l -"},
                  [&line](Session& session) {
                      session.results().bytes(QByteArray::fromStdString(
                          manualPage(line.app(), programVersion().toStdString())));
                      return ExitStatus::Done;
                  });
}

} // namespace host
