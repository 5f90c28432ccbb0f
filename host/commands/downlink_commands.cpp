#include "host/command_line/devices.h"
#include "host/command_line/json_options.h"
#include "host/command_line/text_options.h"
#include "host/commands/commands.h"
#include "host/downlink/command_actions.h"
#include "host/query/command_query.h"

#include <memory>

namespace host {

namespace {

/// The same under two names: "commands" and "command list".
void addQuery(CommandLine& line, CLI::App& parent, const CommandLine::Help& help) {
    const auto query = std::make_shared<CommandQuery>();
    auto& command = line.add(parent, help, [query](Session& session) {
        showCommands(*query, session);
        return ExitStatus::Done;
    });
    addQueryOptions(command, *query);
    command.add_flag("--pending", query->pending,
                     "Only commands that are pending or wait for data");
    line.addOutputOptions(command);
}

CLI::Option* addId(CLI::App& command, QString& id) {
    return addText(command, "ID", id, "The command's id, as `command issue` prints it")
        ->type_name("")
        ->required();
}

void addIssue(CommandLine& line, CLI::App& group) {
    const auto order = std::make_shared<CommandOrder>();
    auto& command = line.add(
        group,
        {.name = "issue",
         .description = "Stores a command for a device and prints its id. It is for the server to "
                        "send it",
         .examples = R"(kelvro-host command issue 1001 --data '{"request": "read registers"}')"},
        [order](Session& session) {
            issueCommand(*order, session);
            return ExitStatus::Done;
        });
    addDevice(command, order->device);
    addJsonObject(command, "--data", order->data, "What the command says, a JSON object")
        ->required();
    addHexBytes(command, "--payload", order->payload, "The bytes to send, in hexadecimal digits");
    addText(command, "--api-key", order->apiKey, "Key of the client that issues the command");
    command.add_option("--timeout", order->timeout, "Time-out, in the server's own unit")
        ->capture_default_str()
        ->type_name("NUMBER");
    addDuration(command, "--ttl", order->lifeSecs,
                "How long the command is kept, as 90s, 30m, 2h, 7d or 4w")
        ->default_str("7d");
}

void addAck(CommandLine& line, CLI::App& group) {
    const auto id = std::make_shared<QString>();
    auto& command = line.add(group,
                             {.name = "ack",
                              .description = "Marks a command as executed",
                              .examples = "kelvro-host command ack 65a1b2c3d4e5f60718293a4b"},
                             [id](Session& session) {
                                 ackCommand(*id, session);
                                 return ExitStatus::Done;
                             });
    addId(command, *id);
}

void addShow(CommandLine& line, CLI::App& group) {
    const auto id = std::make_shared<QString>();
    auto& command =
        line.add(group,
                 {.name = "show",
                  .description = "Shows one command with everything that is stored of it",
                  .examples = "kelvro-host command show 65a1b2c3d4e5f60718293a4b"},
                 [id](Session& session) {
                     showCommand(*id, session);
                     return ExitStatus::Done;
                 });
    addId(command, *id);
    line.addOutputOptions(command);
}

} // namespace

void addDownlinkCommands(CommandLine& line) {
    addQuery(
        line, line.app(),
        {.name = "commands",
         .description = "Shows the downlink commands of devices, newest first over all devices",
         .examples = "kelvro-host commands --device 1001 --pending\n"
                     "kelvro-host commands --device 1001,1002 --since 1d --json"});
    auto& group = line.addGroup("command", "Issues, acknowledges and shows downlink commands");
    addIssue(line, group);
    addAck(line, group);
    addQuery(line, group,
             {.name = "list",
              .description = "Shows the downlink commands of devices, as `commands` does",
              .examples = "kelvro-host command list --device 1001 --pending"});
    addShow(line, group);
}

} // namespace host
