#pragma once

#include "host/accounting.h"
#include "host/console.h"
#include "host/meter_readings.h"
#include "interfaces/ieav_repository.h"

#include <QDateTime>

namespace host {

/// Stores a meter's readings as values, in batches; asks for them back by device, by OBIS code, by
/// period and as the first and last of each energy register; compares every member; and shows the
/// energy registers with the consumption of the period, and the range of the power.
///
/// Values of an earlier demo are deleted first; others are left alone. Throws Failure if the
/// readings do not say which meter they are from. Blocks on the server; its errors pass through.
Accounting runValuesDemo(interfaces::IEAVRepository& repository, const MeterReadingFile& file,
                         const QDateTime& start, Console& console);

} // namespace host
