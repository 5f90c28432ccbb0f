#include "contract/command_line.h"

#include "contract/catalogue.h"
#include "host/command_line/manual.h"
#include "host/command_line/text_options.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>
#include <vector>

namespace contract {

namespace {

void checkTogether(const CommandLine& given) {
    if (selectedRules(given.only).empty()) {
        throw CLI::ValidationError("--only", "no rule has such a name; --list shows them all");
    }
}

} // namespace

std::unique_ptr<CLI::App> makeApp(CommandLine& given) {
    auto app = std::make_unique<CLI::App>(
        "Tries whether a storage plug-in keeps the rules that a host relies on.",
        "kelvro-contract");
    app->set_help_flag("--help,-h", "Print this help and end");
    app->set_version_flag("--version", host::programVersion().toStdString(),
                          "Print the program's version and end");
    app->footer(
        // CLI11 breaks the lines.
        "It prints a line for each rule: passed, failed (what was expected and what was seen) or "
        "not applicable (why), and then the counts. It knows the plug-in by its interfaces only, "
        "and stores records of its own devices, which it deletes again.\n\n"
        "Example:\n"
        "kelvro-contract --plugin libmydriver.so --settings settings.json");
    host::addPluginOptions(*app, given.pluginFile, given.settingsFile);
    host::addText(*app, "--only", given.only,
                  "Try the rules whose names match this regular expression");
    const auto count = static_cast<int>(selectedRules({}).size()) * devicesOfARule;
    app->add_option("--devices", given.firstDevice,
                    "First of the " + std::to_string(count) +
                        " device numbers to work with, which no real device may have")
        ->check(CLI::Range(1, std::numeric_limits<int>::max() - count).description(""))
        ->type_name("DEVICE")
        ->capture_default_str();
    app->add_option("--registered", given.registeredDevice,
                    "A device that the client registry knows; by default the rule about it is not "
                    "applicable")
        ->type_name("DEVICE");
    app->add_option("--time-limit", given.timeLimitSecs, "Seconds that a rule may take")
        ->check(CLI::Range(1, std::numeric_limits<int>::max() / 1000).description(""))
        ->type_name("SECONDS")
        ->capture_default_str();
    app->add_flag("--yes", given.deleteRecords,
                  "Delete what is already stored of the device numbers to work with");
    app->add_flag("--list", given.list, "List the rules and try none");
    app->add_flag("--json", given.json, "Print JSON, one object a line");
    app->add_flag("--verbose", given.verbose, "Show all that the plug-in logs");
    app->add_flag("--manual", given.manual, "Print this program's manual page and end");
    app->add_flag("--completion", given.completion,
                  "Print a script that completes this program's words in bash, and end");
    // In no group: what is only for the program's own child processes is shown nowhere.
    host::addText(*app, "--task", given.task, "")->group("");
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

std::string manualPage(const CLI::App& app) {
    std::vector<host::ManualSection> sections{
        {.title = "EXIT STATUS",
         .entries = {{"0", "No rule failed"},
                     {"1", "A rule failed, or something could not be reached"},
                     {"2", "The program was wrongly called"}}},
    };
    std::ranges::copy(host::settingsSections(), std::back_inserter(sections));
    return host::manualPage(app, {.version = host::programVersion().toStdString(),
                                  .purpose = "try whether a storage plug-in keeps a host's rules",
                                  .sections = std::move(sections)});
}

} // namespace contract
