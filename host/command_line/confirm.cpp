#include "host/command_line/confirm.h"

#include <iostream>
#include <string>
#include <unistd.h>

namespace host {

CLI::Option* addYes(CLI::App& command, bool& yes) {
    return command.add_flag("--yes", yes, "Do not ask");
}

ExitStatus ifConfirmed(const QString& question, bool yes, Session& session,
                       const std::function<void()>& work) {
    if (!yes) {
        if (isatty(STDIN_FILENO) != 1) {
            session.remarks().line(
                QStringLiteral("Nothing was done: without a terminal to ask on, give --yes."));
            return ExitStatus::WronglyCalled;
        }
        session.remarks().line(question + QStringLiteral(" [y/N]"));
        std::string answer;
        std::getline(std::cin, answer);
        if (answer != "y" && answer != "Y" && answer != "yes") {
            session.remarks().line(QStringLiteral("Nothing was done."));
            return ExitStatus::Failed;
        }
    }
    work();
    return ExitStatus::Done;
}

} // namespace host
