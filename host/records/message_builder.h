#pragma once

#include "host/input/telegram.h"
#include "model/message.h"

#include <QDateTime>

#include <vector>

namespace host {

/// A message with what a telegram says of itself; nothing of its reception.
model::message messageOf(const Telegram& telegram);

/// Turns telegrams into messages, one for one and in their order.
///
/// A telegram says nothing about its reception, so that is assigned: the message number i, counted
/// from 0, was registered i minutes before `start` (in whole seconds) and detected 2 seconds
/// earlier, by one of three base stations, at a signal strength of its own. unique_id counts on
/// from the milliseconds of `start`, so that no two runs share one; ttl is 12 hours after `start`.
std::vector<model::message> buildMessages(const std::vector<Telegram>& telegrams,
                                          const QDateTime& start);

} // namespace host
