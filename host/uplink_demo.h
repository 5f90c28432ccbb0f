#pragma once

#include "host/accounting.h"
#include "host/console.h"
#include "host/telegram_reader.h"
#include "interfaces/iul_app_message_repository.h"

#include <QDateTime>

namespace host {

/// Stores one message for each telegram, asks for them back by device, by period and by tag, shows
/// them and compares every member.
///
/// Messages of an earlier demo for the same devices are deleted first. The store can delete the
/// messages of a device only all together, so this throws Failure, and changes nothing, if one of
/// the devices has messages that no demo wrote. Blocks on the server; its errors pass through.
Accounting runUplinkDemo(interfaces::IULAPPMessageRepository& repository, const TelegramFile& file,
                         const QDateTime& start, Console& console);

} // namespace host
