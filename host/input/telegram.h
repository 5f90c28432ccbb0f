#pragma once

#include "host/input/record_file.h"

#include <QByteArray>
#include <QIODevice>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace host {

/// One radio telegram of a meter, with the readings that a decoder got from it.
struct Telegram {
    /// Line of the input, counted from 1.
    int lineNumber = 0;
    QByteArray payload;
    /// The meter's id as a number, 0 to 99,999,999.
    int deviceNumber = 0;
    /// The meter's id as printed on it: eight decimal digits.
    QString meterId;
    /// Name of the meter's make; also the name of its driver in wmbusmeters.
    QString meterMake;
    /// What is metered: "electricity", "water", …
    QString medium;
    QJsonObject decoded;
    /// When it was received, if the line says so.
    std::optional<qint64> timeSecs;
    /// What the line says of the reception: the receiver's name, the signal's strength.
    QJsonObject reception;
};

using TelegramFile = RecordFile<Telegram>;

/// The telegram of an object {"telegram": HEX, "decoded": {"id", "meter", "media", …}}, which may
/// say in "time" when it was received, in seconds since 1970. Throws Rejection if it is anything
/// else.
Telegram parseTelegram(const QJsonObject& fields, int lineNumber);

/// Fills in the readings and what they say of the meter. Throws Rejection if it is not there.
void takeDecoded(Telegram& telegram, const QJsonObject& decoded);

/// The bytes of hexadecimal digits. Throws Rejection if there are none, or anything else.
QByteArray parsePayload(const QJsonValue& value);

/// Reads lines of the form {"telegram": HEX, "decoded": {"id", "meter", "media", …}}, one telegram
/// each; blank lines are passed over. A line that is anything else is rejected and the rest is
/// read. `input` must be open; reads it to its end.
TelegramFile readTelegrams(QIODevice& input);

} // namespace host
