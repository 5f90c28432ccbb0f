#pragma once

#include "host/records/device_records.h"
#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/message.h"

#include <QString>
#include <QStringList>

namespace host {

/// The record as the store gives it back: timestamps in whole seconds, a number as a double, the
/// host's own members, which are never stored, empty or 0.
model::message asStored(model::message record);
model::dev_value asStored(model::dev_value record);
model::dev_event asStored(model::dev_event record);
model::dl_message asStored(model::dl_message record);
template <class Record>
Record asStored(Record record) {
    return record;
}

/// One entry for each member of asStored(written) that came back another: its name, what was
/// written and what came back. Numbers are compared bit for bit, JSON member by member.
///
/// Exists for the four records above, DeviceState, DeviceQueues and DeviceEntry.
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
