#include "host/command_line/confirm.h"
#include "host/command_line/devices.h"
#include "host/commands/commands.h"
#include "host/device/downlink_queue.h"

#include <memory>

namespace host {

namespace {

void addShow(CommandLine& line, CLI::App& group) {
    const auto device = std::make_shared<int>();
    auto& command = line.add(group,
                             {.name = "show",
                              .description = "Shows the downlink queues of a device, one element a "
                                             "line: as Redis has them, or else their durable copy",
                              .examples = "kelvro-host queue show 1001"},
                             [device](Session& session) {
                                 showQueue(*device, session);
                                 return ExitStatus::Done;
                             });
    addDevice(command, *device);
    line.addOutputOptions(command);
}

void addClear(CommandLine& line, CLI::App& group) {
    const auto device = std::make_shared<int>();
    const auto yes = std::make_shared<bool>(false);
    auto& command = line.add(
        group,
        {.name = "clear",
         .description = "Deletes the downlink queues of a device and their durable copy",
         .examples = "kelvro-host queue clear 1001 --yes"},
        [device, yes](Session& session) {
            const auto question =
                QStringLiteral("Delete the downlink queues of device %1 and their durable "
                               "copy?")
                    .arg(*device);
            return ifConfirmed(question, *yes, session, [&] { clearQueue(*device, session); });
        });
    addDevice(command, *device);
    addYes(command, *yes);
}

} // namespace

void addQueueCommands(CommandLine& line) {
    auto& group = line.addGroup("queue", "Shows and clears the downlink queues of a device");
    addShow(line, group);
    addClear(line, group);
}

} // namespace host
