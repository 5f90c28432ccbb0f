#include "host/command_line/devices.h"

namespace host {

CLI::Option* addDevices(CLI::App& command, std::list<int>& devices) {
    return command.add_option("--device,-d", devices, "Device number; more than one as 1001,1002")
        ->delimiter(',')
        ->allow_extra_args(false)
        ->type_name("DEVICE")
        ->required();
}

CLI::Option* addDevice(CLI::App& command, int& device) {
    return command.add_option("DEVICE", device, "Device number")->type_name("")->required();
}

} // namespace host
