#include "host/command_line/completion.h"
#include "host/command_line/manual.h"
#include "host/commands/commands.h"

#include <QByteArray>

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace host {

namespace {

ManualTexts manualTexts() {
    std::vector<ManualSection> sections{
        {.title = "EXIT STATUS",
         .entries = {{"0", "Done"},
                     {"1", "Something failed, records were rejected, or doctor found something "
                           "wrong"},
                     {"2", "The program was wrongly called"}}},
    };
    std::ranges::copy(settingsSections(), std::back_inserter(sections));
    return {.version = programVersion().toStdString(),
            .purpose = "work with the data of a metering server",
            .sections = std::move(sections)};
}

} // namespace

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
                      session.results().bytes(
                          QByteArray::fromStdString(manualPage(line.app(), manualTexts())));
                      return ExitStatus::Done;
                  });
}

} // namespace host
