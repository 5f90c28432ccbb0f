#pragma once

#include "host/input/record_file.h"

#include <QByteArray>
#include <QIODevice>
#include <QJsonObject>
#include <QString>

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
};

using TelegramFile = RecordFile<Telegram>;

/// Reads lines of the form {"telegram": HEX, "decoded": {"id", "meter", "media", …}}, one telegram
/// each; blank lines are passed over. A line that is anything else is rejected and the rest is
/// read. `input` must be open; reads it to its end.
TelegramFile readTelegrams(QIODevice& input);

} // namespace host
