#pragma once

#include "host/command_line/exit_status.h"
#include "host/session/session.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace host {

/// The program's commands. Each is added once, and all that tells of it is made from that: help,
/// completion in the shell, and the manual page.
class CommandLine {
public:
    using Run = std::function<ExitStatus(Session&)>;

    struct Help {
        std::string name;
        /// What the command does, as a sentence without its full stop.
        std::string description;
        /// A command line that somebody would type; more than one on lines of their own.
        std::string examples;
    };

    CommandLine();
    ~CommandLine() = default;
    // The options refer to this object.
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    CLI::App& app() { return m_app; }

    /// A word that commands stand behind, as "state" in "state show".
    CLI::App& addGroup(const std::string& name, const std::string& description);

    /// A command that needs no servers.
    CLI::App& addPlain(const Help& help, Run run) { return addPlain(m_app, help, std::move(run)); }
    CLI::App& addPlain(CLI::App& parent, const Help& help, Run run);

    /// A command with the options that say where plug-in and servers are.
    CLI::App& add(const Help& help, Run run) { return add(m_app, help, std::move(run)); }
    CLI::App& add(CLI::App& parent, const Help& help, Run run);

    /// For a command that shows records: --json, --csv and --local.
    void addOutputOptions(CLI::App& command);

    /// For a command that shows times: --local.
    void addZoneOption(CLI::App& command);

    /// Chooses a command. What the program ends with instead, if help was asked for or the call was
    /// wrong; either has been printed then. Throws Failure if help could not be.
    std::optional<ExitStatus> parse(int argc, const char* const* argv);

    /// Runs the command that was chosen. What the command throws passes through.
    ///
    /// The MongoDB driver's process-wide instance must exist.
    ExitStatus run();

private:
    CLI::App m_app;
    SessionOptions m_options;
    Run m_chosen;
};

/// An option with one of a few words; the shell completes them.
template <class Choice>
CLI::Option* addChoice(CLI::App& command, const std::string& name, Choice& choice,
                       const std::map<std::string, Choice>& words, const std::string& description) {
    std::string allWords;
    std::string present;
    for (const auto& [word, value] : words) {
        allWords += (allWords.empty() ? "" : "|") + word;
        present = value == choice ? word : present;
    }
    return command.add_option(name, choice, description)
        ->transform(CLI::CheckedTransformer(words).description(""))
        ->type_name(allWords)
        ->default_str(present);
}

} // namespace host
