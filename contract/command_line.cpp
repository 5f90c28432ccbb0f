#include "contract/command_line.h"

#include "contract/catalogue.h"

#include <limits>
#include <string>

namespace contract {

namespace {

CLI::Option* addText(CLI::App& app, const char* name, QString& text, const char* description) {
    return app.add_option_function<std::string>(
        name, [&text](const std::string& given) { text = QString::fromStdString(given); },
        description);
}

void checkTogether(const CommandLine& given) {
    if (!given.list && given.pluginFile.isEmpty()) {
        throw CLI::RequiredError("--plugin");
    }
    if (!given.list && given.settingsFile.isEmpty()) {
        throw CLI::RequiredError("--settings");
    }
    if (selectedRules(given.only).empty()) {
        throw CLI::ValidationError("--only", "no rule has such a name; --list shows them all");
    }
}

} // namespace

std::unique_ptr<CLI::App> makeApp(CommandLine& given) {
    auto app = std::make_unique<CLI::App>(
        "Tries whether a storage plug-in keeps the rules that a host relies on.",
        "kelvro-contract");
    app->set_version_flag("--version", KELVRO_CONTRACT_VERSION);
    app->footer(
        // CLI11 breaks the lines.
        "It prints a line for each rule: passed, failed (what was expected and what was seen) or "
        "not applicable (why), and then the counts. It knows the plug-in by its interfaces only, "
        "and stores records of its own devices, which it deletes again.\n\n"
        "Exit status: 0 nothing failed, 1 something failed or could not be reached, 2 wrongly "
        "called.\n\n"
        "Example: kelvro-contract --plugin libmydriver.so --settings settings.json");
    addText(*app, "--plugin", given.pluginFile, "The plug-in's file");
    addText(*app, "--settings", given.settingsFile, "JSON file with the plug-in's settings");
    addText(*app, "--only", given.only, "Try the rules whose names match this regular expression");
    const auto count = static_cast<int>(selectedRules({}).size()) * devicesOfARule;
    app->add_option("--devices", given.firstDevice,
                    "First of the " + std::to_string(count) +
                        " device numbers to work with, which no real device may have")
        ->check(CLI::Range(1, std::numeric_limits<int>::max() - count))
        ->capture_default_str();
    app->add_option("--registered", given.registeredDevice,
                    "Number of a device that the client registry knows; by default the rule about "
                    "it is not applicable");
    app->add_option("--time-limit", given.timeLimitSecs, "Seconds that a rule may take")
        ->check(CLI::PositiveNumber)
        ->capture_default_str();
    app->add_flag("--yes", given.deleteRecords,
                  "Delete what is already stored of the device numbers to work with");
    app->add_flag("--list", given.list, "List the rules and try none");
    app->add_flag("--json", given.json, "Print JSON, one object a line");
    app->add_flag("--verbose", given.verbose, "Show all that the plug-in logs");
    // In no group: what is only for the program's own child processes is shown nowhere.
    addText(*app, "--task", given.task, "")->group("");
    app->add_option_function<std::vector<std::string>>(
           "--item",
           [&given](const std::vector<std::string>& items) {
               for (const auto& item : items) {
                   given.items.append(QString::fromStdString(item));
               }
           },
           "")
        ->group("");
    app->callback([&given] { checkTogether(given); });
    return app;
}

} // namespace contract
