#include "host/command_line/devices.h"
#include "host/commands/commands.h"
#include "host/device/client_entry.h"

#include <memory>

namespace host {

void addClientsCommand(CommandLine& line) {
    const auto device = std::make_shared<int>();
    auto& command =
        line.add({.name = "clients",
                  .description = "Shows which clients a device belongs to, its protocol "
                                 "and its hardware type",
                  .examples = "kelvro-host clients 1001"},
                 [device](Session& session) {
                     showClients(*device, session);
                     return ExitStatus::Done;
                 });
    addDevice(command, *device);
    line.addOutputOptions(command);
}

} // namespace host
