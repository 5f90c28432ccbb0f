#pragma once

#include "host/device_records.h"
#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/message.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace host {

/// The functions below exist once for every kind of record. They compare by the rules of the store:
/// timestamps in whole seconds, ttl in milliseconds, a numeric reading as a double, every other
/// member as it is (numbers bit for bit, JSON member by member), and the members that are never
/// stored must be empty or 0.

/// One entry for each member that differs: its name, what was written and what came back.
QStringList differences(const model::message& written, const model::message& readBack);
QStringList differences(const model::dev_value& written, const model::dev_value& readBack);
QStringList differences(const model::dev_event& written, const model::dev_event& readBack);
QStringList differences(const model::dl_message& written, const model::dl_message& readBack);
QStringList differences(const DeviceState& written, const DeviceState& readBack);
QStringList differences(const DeviceQueues& written, const DeviceQueues& readBack);
QStringList differences(const DeviceEntry& written, const DeviceEntry& readBack);

/// What tells one record from all others of its kind.
QString recordKey(const model::message& message);
QString recordKey(const model::dev_value& value);
QString recordKey(const model::dev_event& event);
QString recordKey(const model::dl_message& command);
QString recordKey(const DeviceState& state);
QString recordKey(const DeviceQueues& queues);
QString recordKey(const DeviceEntry& entry);

/// The record in a few words, for reports.
QString describe(const model::message& message);
QString describe(const model::dev_value& value);
QString describe(const model::dev_event& event);
QString describe(const model::dl_message& command);
QString describe(const DeviceState& state);
QString describe(const DeviceQueues& queues);
QString describe(const DeviceEntry& entry);

} // namespace host
