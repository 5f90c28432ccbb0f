#pragma once

#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/dl_queues.h"
#include "model/message.h"

#include <QJsonObject>

#include <list>

/// The records that a benchmark stores, and how it knows them again.
namespace host {

/// Its devices: numbers that no meter has.
inline constexpr int firstBenchDevice = 2'147'480'001;
inline constexpr int benchDeviceCount = 10;
std::list<int> benchDevices();

/// All of them expire within the hour. `number` makes each a record of its own.
model::message benchMessage(int device, quint64 number);
model::dl_message benchCommand(int device);
std::list<model::dev_value> benchValues(int device, int count);
std::list<model::dev_event> benchEvents(int device, int count);
QJsonObject benchState();
model::dl_queues benchQueues();

bool isBenchs(const model::message& message);
bool isBenchs(const model::dl_message& command);
bool isBenchs(const model::dev_value& value);
bool isBenchs(const model::dev_event& event);
bool isBenchs(const QJsonObject& state);
bool isBenchs(const model::dl_queues& queues);

} // namespace host
