#include "host/command_line/manual.h"

#include "host/command_line/app_walk.h"

#include <QString>

#include <sstream>

namespace host {

namespace {

/// Text that roff takes for nothing else, on one line.
std::string escaped(const std::string& text) {
    std::string result;
    for (const char character : text) {
        switch (character) {
        case '\\':
            result += "\\e";
            break;
        case '-':
            result += "\\-";
            break;
        case '\n':
            result += ' ';
            break;
        default:
            result += character;
        }
    }
    // A line that begins with one of these would be a request.
    return result.starts_with('.') || result.starts_with('\'') ? "\\&" + result : result;
}

std::string sentence(const std::string& text) {
    return escaped(text.empty() || text.back() == '.' ? text : text + '.');
}

std::string nameLine(const CLI::Option& option) {
    std::string line;
    for (const auto& name : namesOf(option)) {
        line += (line.empty() ? "" : ", ") + ("\\fB" + escaped(name) + "\\fR");
    }
    if (line.empty()) {
        return "\\fI" + escaped(option.get_name(true)) + "\\fR";
    }
    if (const auto type = option.get_type_name(); option.get_items_expected_max() > 0) {
        line += " \\fI" + escaped(type) + "\\fR";
    }
    return line;
}

void addOption(std::ostream& page, const CLI::Option& option) {
    page << ".TP\n" << nameLine(option) << '\n' << sentence(option.get_description()) << '\n';
    if (const auto standing = option.get_default_str(); !standing.empty()) {
        page << "Default: " << escaped(standing) << ".\n";
    }
}

void addCommand(std::ostream& page, const CLI::App& command, const std::string& path);

void addOptions(std::ostream& page, const CLI::App& command) {
    for (const auto* option : command.get_options()) {
        addOption(page, *option);
    }
}

void addCommands(std::ostream& page, const CLI::App& app, const std::string& path) {
    for (const auto* command : commandsOf(app)) {
        addCommand(page, *command, path + command->get_name());
    }
}

void addCommand(std::ostream& page, const CLI::App& command, const std::string& path) {
    page << ".SS " << escaped(path) << '\n' << sentence(command.get_description()) << '\n';
    addOptions(page, command);
    // Its first line says that examples follow.
    std::istringstream footer(command.get_footer());
    std::string line;
    std::getline(footer, line);
    if (!line.empty()) {
        page << ".PP\n" << escaped(line) << "\n.PP\n.EX\n";
        while (std::getline(footer, line)) {
            page << escaped(line) << '\n';
        }
        page << ".EE\n";
    }
    addCommands(page, command, path + ' ');
}

} // namespace

std::string manualPage(const CLI::App& app, const std::string& version) {
    std::ostringstream page;
    const auto& name = app.get_name();
    page << ".TH " << QString::fromStdString(name).toUpper().toStdString() << R"( 1 "" ")" << name
         << ' ' << version << "\"\n"
         << ".SH NAME\n"
         << escaped(name) << " \\- work with the data of a metering server\n"
         << ".SH SYNOPSIS\n.B " << escaped(name) << "\n.I COMMAND\n.RI [ OPTION ...]\n"
         << ".SH DESCRIPTION\n"
         << sentence(app.get_description()) << '\n';
    addOptions(page, app);
    page << ".SH COMMANDS\n";
    addCommands(page, app, "");
    page << ".SH EXIT STATUS\n"
            ".TP\n0\nDone.\n"
            ".TP\n1\nSomething failed, records were rejected, or doctor found something wrong.\n"
            ".TP\n2\nThe program was wrongly called.\n";
    page << ".SH ENVIRONMENT\n"
            ".TP\nKELVRO_SETTINGS\nThe settings file, where \\-\\-settings names none.\n"
            ".TP\nMONGODB_URL, REDIS_URL\nThe servers, where no settings file is named: "
            "mongodb://... and redis://[:password@]host:port.\n"
            ".SH FILES\n.TP\n~/.config/kelvrostorage/settings.json\n"
            "The settings, where nothing else says where the servers are.\n";
    return page.str();
}

} // namespace host
