#pragma once

#include "host/input/telegram.h"

#include <QByteArray>
#include <QJsonObject>

#include <optional>

namespace host {

/// Of an object that wmbusmeters --format=json prints, the meter's own readings: without what the
/// program adds of its run ("_", "name", "timestamp") and of the reception ("device", "rssi_dbm").
QJsonObject meterReadings(QJsonObject printed);

/// Whether an object is one that wmbusmeters prints.
bool isWmbusmeters(const QJsonObject& fields);

/// The telegram of such an object; its payload is not in it. Throws Rejection if it does not say
/// which meter it is of, or if its time is none.
Telegram parseWmbusmeters(const QJsonObject& fields, int lineNumber);

/// The bytes of a line telegram=|HEX_HEX|+0, which wmbusmeters --logtelegrams prints before the
/// object; nothing if the line is no such.
std::optional<QByteArray> parseLoggedTelegram(const QByteArray& line);

} // namespace host
