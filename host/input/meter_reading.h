#pragma once

#include "host/input/record_file.h"

#include <QIODevice>
#include <QString>
#include <QVariant>

#include <optional>

namespace host {

/// One reading of a meter: the value of one OBIS code at one instant.
struct MeterReading {
    /// Line of the input, counted from 1.
    int lineNumber = 0;
    qint64 timeSecs = 0;
    QString obisCode;
    /// A double if there is a unit; else an int, a double, a bool or a QString. Lists are kept as
    /// their JSON text.
    QVariant value;
    /// Empty where the value is no quantity.
    QString unit;
};

using MeterReadingFile = RecordFile<MeterReading>;

/// The reading of an object {"time": SECONDS, "obis": CODE, "value": VALUE, "unit": UNIT}, the unit
/// being optional. Throws Rejection if it is anything else.
MeterReading parseMeterReading(const QJsonObject& fields, int lineNumber);

/// If the reading is the meter's serial number (0-0:96.1.1) and ends in digits: the last eight.
std::optional<int> serialNumber(const MeterReading& reading);

/// Reads a line each as parseMeterReading() does. A line that is anything else, or that repeats the
/// time and code of another, is rejected and the rest is read; blank lines are passed over. `input`
/// must be open; reads it to its end.
MeterReadingFile readMeterReadings(QIODevice& input);

/// The number of the device that gave the readings: the last eight digits of the serial number that
/// an electricity meter sends under 0-0:96.1.1. Throws Failure, naming file and line, if it sends
/// none.
int deviceNumber(const MeterReadingFile& file);

} // namespace host
