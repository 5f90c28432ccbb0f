#pragma once

#include "host/input/meter_reading.h"
#include "model/dev_value.h"

#include <QDateTime>

#include <vector>

namespace host {

/// Turns a meter's readings into values of the device, one for one and in their order. They are
/// marked as the demo's in extended_data, which also has the unit, and by their tag, so that they
/// can be deleted without touching others. Readings of one instant came in one telegram, so they
/// share their message_id, the instant. `start` is the beginning of the run.
std::vector<model::dev_value> buildValues(const std::vector<MeterReading>& readings, int device,
                                          const QDateTime& start);

} // namespace host
