#pragma once

#include "host/records/device_records.h"
#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/message.h"

#include <QString>
#include <QStringList>

namespace host {

/// One entry for each member that came back another than the store's rules say: its name, what was
/// written and what came back. By the rules timestamps are kept in whole seconds and a number as a
/// double, and the host's own members, which are never stored, come back empty or 0; all else as it
/// was, numbers bit for bit, JSON member by member.
///
/// Exists for the records that describe() knows.
template <class Record>
QStringList differences(const Record& written, const Record& readBack);

/// The record in a few words, which tell it from all others of its kind.
QString describe(const model::message& message);
QString describe(const model::dev_value& value);
QString describe(const model::dev_event& event);
QString describe(const model::dl_message& command);
QString describe(const DeviceState& state);
QString describe(const DeviceQueues& queues);
QString describe(const DeviceEntry& entry);

} // namespace host
