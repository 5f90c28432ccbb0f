#pragma once

#include "host/accounting.h"
#include "host/console.h"
#include "interfaces/idl_app_message_repository.h"
#include "model/message.h"

#include <vector>

namespace host {

/// Issues one command for each message's device and moves the commands through their states: all
/// pending; all waiting for data; one in four timed out and one in four acknowledged; the rest
/// acknowledged too. In each state it asks for the commands that are not acknowledged; at the end
/// for all commands, by device and one by one. Compares every member and shows how many commands
/// were in which state.
///
/// Commands of an earlier demo for the same devices are deleted first. The store can delete a
/// device's commands only by their time, so this throws Failure, and changes nothing, if one of the
/// devices has commands that no demo issued. Blocks on the server; its errors pass through.
Accounting runDownlinkDemo(interfaces::IDLAPPMessageRepository& repository,
                           const std::vector<model::message>& messages, Console& console);

} // namespace host
