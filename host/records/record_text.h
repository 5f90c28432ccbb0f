#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QString>

namespace host {

/// The device's number as it is printed on a meter: eight digits.
QString deviceText(int device);

/// The instant in UTC, to the second.
QString timeText(const QDateTime& instant);

/// The text with what a terminal would take for a command as \xNN.
QString visibleText(const QString& text);

/// One or two of a telegram's readings with their units, for a table: totals first, then current
/// values; of each those that are not 0. The unit is taken from the end of the reading's name
/// (total_m3: "total: 21.93 m³").
QString readingsText(const QJsonObject& decoded);

} // namespace host
