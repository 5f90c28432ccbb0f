#pragma once

#include "host/console.h"
#include "host/meter_readings.h"
#include "host/telegram_reader.h"

#include <QString>

namespace host {

/// Read a file of records and report each rejected line with its number. Throw Failure, naming the
/// file, if it cannot be read or holds no record at all.
TelegramFile openTelegrams(const QString& fileName, Console& console);
MeterReadingFile openMeterReadings(const QString& fileName, Console& console);

} // namespace host
