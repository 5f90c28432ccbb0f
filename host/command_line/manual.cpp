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
    for (const auto* option : command.get_options(isShown)) {
        addOption(page, *option);
    }
}

void addCommands(std::ostream& page, const CLI::App& app, const std::string& path) {
    for (const auto* command : commandsOf(app)) {
        addCommand(page, *command, path + command->get_name());
    }
}

/// Paragraphs, and after a line that ends with a colon examples.
void addFooter(std::ostream& page, const CLI::App& command) {
    std::istringstream footer(command.get_footer());
    std::string line;
    while (std::getline(footer, line)) {
        if (!line.empty()) {
            page << ".PP\n" << escaped(line) << '\n';
        }
        if (!line.ends_with(':')) {
            continue;
        }
        page << ".PP\n.EX\n";
        while (std::getline(footer, line) && !line.empty()) {
            page << escaped(line) << '\n';
        }
        page << ".EE\n";
    }
}

void addCommand(std::ostream& page, const CLI::App& command, const std::string& path) {
    page << ".SS " << escaped(path) << '\n' << sentence(command.get_description()) << '\n';
    addOptions(page, command);
    addFooter(page, command);
    addCommands(page, command, path + ' ');
}

void addSection(std::ostream& page, const ManualSection& section) {
    page << ".SH " << escaped(section.title) << '\n';
    for (const auto& [word, text] : section.entries) {
        page << ".TP\n" << escaped(word) << '\n' << sentence(text) << '\n';
    }
}

} // namespace

std::string manualPage(const CLI::App& app, const ManualTexts& texts) {
    std::ostringstream page;
    const auto& name = app.get_name();
    const bool hasCommands = !commandsOf(app).empty();
    page << ".TH " << QString::fromStdString(name).toUpper().toStdString() << R"( 1 "" ")" << name
         << ' ' << texts.version << "\"\n"
         << ".SH NAME\n"
         << escaped(name) << " \\- " << escaped(texts.purpose) << '\n'
         << ".SH SYNOPSIS\n.B " << escaped(name) << (hasCommands ? "\n.I COMMAND" : "")
         << "\n.RI [ OPTION ...]\n"
         << ".SH DESCRIPTION\n"
         << sentence(app.get_description()) << '\n';
    if (hasCommands) {
        addOptions(page, app);
        page << ".SH COMMANDS\n";
        addCommands(page, app, "");
    } else {
        addFooter(page, app);
        page << ".SH OPTIONS\n";
        addOptions(page, app);
    }
    for (const auto& section : texts.sections) {
        addSection(page, section);
    }
    return page.str();
}

std::vector<ManualSection> settingsSections() {
    return {
        {.title = "ENVIRONMENT",
         .entries = {{"KELVRO_SETTINGS", "The settings file, where --settings names none"},
                     {"MONGODB_URL, REDIS_URL",
                      "The servers, where no settings file is named: mongodb://... and "
                      "redis://[:password@]host:port"}}},
        {.title = "FILES",
         .entries = {{"~/.config/kelvrostorage/settings.json",
                      "The settings, where nothing else says where the servers are"}}},
    };
}

} // namespace host
