#pragma once

#include "host/command_line/exit_status.h"
#include "host/session/session.h"

#include <CLI/CLI.hpp>
#include <QString>

#include <functional>

namespace host {

/// --yes, for a command that deletes.
CLI::Option* addYes(CLI::App& command, bool& yes);

/// Does what cannot be undone if the user wants it: that is, if --yes has been given, or else if
/// the question is answered so on the terminal. Where there is no terminal to ask on, the command
/// was wrongly called.
ExitStatus ifConfirmed(const QString& question, bool yes, Session& session,
                       const std::function<void()>& work);

} // namespace host
