#include "host/command_line/confirm.h"
#include "host/command_line/devices.h"
#include "host/command_line/text_options.h"
#include "host/commands/commands.h"
#include "host/device/driver_state.h"

#include <memory>

namespace host {

namespace {

CLI::Option* addPrefix(CLI::App& command, QString& prefix) {
    return addText(command, "--prefix", prefix,
                   "First part of the states' keys, as drv in drv:1001; your server's drivers "
                   "choose it")
        ->type_name("PREFIX")
        ->required();
}

void addState(CLI::App& command, StateOf& state) {
    addDevice(command, state.device);
    addPrefix(command, state.prefix);
}

void addShow(CommandLine& line, CLI::App& group) {
    const auto state = std::make_shared<StateOf>();
    auto& command =
        line.add(group,
                 {.name = "show",
                  .description = "Shows the driver state of a device: as Redis has it, or "
                                 "else its durable copy",
                  .examples = "kelvro-host state show 1001 --prefix drv"},
                 [state](Session& session) {
                     showState(*state, session);
                     return ExitStatus::Done;
                 });
    addState(command, *state);
    line.addOutputOptions(command);
}

void addSet(CommandLine& line, CLI::App& group) {
    struct Options {
        StateOf state;
        QString name;
        QJsonValue value;
        bool persist = false;
    };
    const auto options = std::make_shared<Options>();
    auto& command = line.add(
        group,
        {.name = "set",
         .description = "Sets one value in the driver state of a device. A server that is at work "
                        "on the device may overwrite it",
         .examples = "kelvro-host state set 1001 interval 900 --prefix drv --persist\n"
                     "kelvro-host state set 1001 mode '\"15\"' --prefix drv\n"
                     "kelvro-host state set 1001 radio '{\"power\": 14}' --prefix drv"},
        [options](Session& session) {
            setStateValue(options->state, options->name, options->value, options->persist, session);
            return ExitStatus::Done;
        });
    addState(command, options->state);
    addText(command, "NAME", options->name, "Name of the value")->type_name("")->required();
    command
        .add_option_function<std::string>(
            "VALUE",
            [value = &options->value](const std::string& given) {
                const auto typed = stateValue(QString::fromStdString(given));
                if (!typed) {
                    throw CLI::ValidationError(
                        given + " is neither a number nor a text nor a JSON object, which "
                                "is all that a state holds; put a text in \"quotes\"");
                }
                *value = *typed;
            },
            "A number, a text or a JSON object")
        ->type_name("")
        ->required();
    command.add_flag("--persist", options->persist, "Store the durable copy too");
}

void addDelete(CommandLine& line, CLI::App& group) {
    const auto state = std::make_shared<StateOf>();
    const auto yes = std::make_shared<bool>(false);
    auto& command = line.add(
        group,
        {.name = "delete",
         .description = "Deletes the driver state of a device and its durable copy",
         .examples = "kelvro-host state delete 1001 --prefix drv --yes"},
        [state, yes](Session& session) {
            const auto question = QStringLiteral("Delete the state %1:%2 and its durable copy?")
                                      .arg(state->prefix)
                                      .arg(state->device);
            return ifConfirmed(question, *yes, session, [&] { deleteState(*state, session); });
        });
    addState(command, *state);
    addYes(command, *yes);
}

void addList(CommandLine& line, CLI::App& group) {
    const auto prefix = std::make_shared<QString>();
    auto& command =
        line.add(group,
                 {.name = "list",
                  .description = "Shows the driver states of all devices that Redis has "
                                 "under a prefix with a colon in it, as SECOND:FIRST",
                  .examples = "kelvro-host state list --prefix drv:lora --json"},
                 [prefix](Session& session) {
                     listStates(*prefix, session);
                     return ExitStatus::Done;
                 });
    addPrefix(command, *prefix)
        ->check(CLI::Validator(
            [](const std::string& given) {
                return given.find(':') == std::string::npos
                           ? '"' + given +
                                 "\" has no colon: states can be listed only under a prefix as "
                                 "SECOND:FIRST"
                           : std::string();
            },
            "", ""));
    line.addOutputOptions(command);
}

} // namespace

void addStateCommands(CommandLine& line) {
    auto& group = line.addGroup("state", "Shows, sets and deletes what drivers keep of a device");
    addShow(line, group);
    addSet(line, group);
    addDelete(line, group);
    addList(line, group);
}

} // namespace host
