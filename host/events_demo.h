#pragma once

#include "host/accounting.h"
#include "host/console.h"
#include "interfaces/ieav_repository.h"
#include "model/message.h"

#include <vector>

namespace host {

/// Stores the status changes that the messages' readings tell of as events, asks for them back by
/// device, by period and by text, shows them and compares every member.
///
/// Events of an earlier demo for the same devices are deleted first. The store can delete a
/// device's events only by their time, so this throws Failure, and changes nothing, if one of the
/// devices has events that no demo wrote. Blocks on the server; its errors pass through.
Accounting runEventsDemo(interfaces::IEAVRepository& repository,
                         const std::vector<model::message>& messages, Console& console);

} // namespace host
