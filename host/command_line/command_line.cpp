#include "host/command_line/command_line.h"

#include "host/command_line/text_options.h"
#include "host/console.h"

#include <QByteArray>
#include <QLoggingCategory>

#include <sstream>
#include <utility>

namespace host {

CommandLine::CommandLine()
    : m_app("Loads a storage plug-in from a file and works through its interfaces.",
            "kelvro-host") {
    m_app.set_version_flag("--version", programVersion().toStdString(),
                           "Print the program's version and end");
    m_app.set_help_flag("--help,-h", "Print this help and end");
    m_app.require_subcommand(1);
    m_app.footer("`kelvro-host COMMAND --help` tells more of each command.");
}

CLI::App& CommandLine::addGroup(const std::string& name, const std::string& description) {
    auto& group = *m_app.add_subcommand(name, description);
    group.require_subcommand(1);
    return group;
}

CLI::App& CommandLine::addPlain(CLI::App& parent, const Help& help, Run run) {
    auto& command = *parent.add_subcommand(help.name, help.description);
    command.footer("Example:\n" + help.examples);
    command.callback([this, run = std::move(run)] { m_chosen = run; });
    return command;
}

CLI::App& CommandLine::add(CLI::App& parent, const Help& help, Run run) {
    auto& command = addPlain(parent, help, std::move(run));
    addPluginOptions(command, m_options.pluginFile, m_options.settingsFile);
    command.add_flag("--verbose", m_options.verbose,
                     "Show the log lines of the plug-in and of the MongoDB driver");
    return command;
}

void CommandLine::addOutputOptions(CLI::App& command) {
    const auto addForm = [&](const char* name, OutputForm form, const char* description) {
        return command.add_flag_callback(
            name, [this, form] { m_options.form = form; }, description);
    };
    auto* const json = addForm("--json", OutputForm::JsonLines, "Print a JSON object a line");
    addForm("--csv", OutputForm::Csv, "Print comma-separated values (RFC 4180)")->excludes(json);
    addZoneOption(command);
}

void CommandLine::addZoneOption(CLI::App& command) {
    command.add_flag("--local", m_options.localTimes,
                     "Show times in this machine's zone rather than in UTC");
}

std::optional<ExitStatus> CommandLine::parse(int argc, const char* const* argv) {
    try {
        m_app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        std::ostringstream help;
        const bool asked = m_app.exit(error, help) == 0;
        auto results = Console::standardOutput();
        results.bytes(QByteArray::fromStdString(help.str()));
        results.requireWritten();
        return asked ? ExitStatus::Done : ExitStatus::WronglyCalled;
    }
    return {};
}

ExitStatus CommandLine::run() {
    if (!m_options.verbose) {
        QLoggingCategory::setFilterRules(QStringLiteral("*.debug=false\n*.info=false"));
    }
    auto results = Console::standardOutput();
    auto remarks = Console::standardError();
    Session session(m_options, results, remarks);
    const auto status = m_chosen(session);
    results.requireWritten();
    return status;
}

} // namespace host
