#pragma once

#include "model/dev_event.h"
#include "model/message.h"

#include <vector>

namespace host {

/// What an event of the demo is about; the event_code of its record.
enum class EventCode : int {
    /// The meter's status is not OK.
    Status = 1,
    /// The meter has set an error flag.
    ErrorFlag = 2,
};

/// Finds the status changes that the messages' readings tell of: one event for each word of the
/// members "status", "current_status", "error" and "error_flags", but for the word OK. A word that
/// several of a message's members repeat gives one event. Its text is the word, its parameter the
/// word's place in the member, counted from 0, and its time that of the message.
std::vector<model::dev_event> findEvents(const std::vector<model::message>& messages);

} // namespace host
