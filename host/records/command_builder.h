#pragma once

#include "model/dl_message.h"
#include "model/message.h"

#include <vector>

namespace host {

/// Makes one downlink command for each message, in their order: a request to the message's device,
/// issued one second after the message was registered, pending, with a time-out of 60 and a payload
/// of its own, and marked as the demo's by its api_key.
std::vector<model::dl_message> buildCommands(const std::vector<model::message>& messages);

} // namespace host
