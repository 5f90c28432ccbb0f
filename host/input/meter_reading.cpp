#include "host/input/meter_reading.h"

#include "host/failure.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPair>

#include <algorithm>
#include <cmath>
#include <limits>

namespace host {

namespace {

/// The last second of the year 9999.
constexpr double lastSecs = 253402300799.0;

bool isWhole(double number) {
    return std::trunc(number) == number;
}

qint64 parseTime(const QJsonValue& value) {
    if (!value.isDouble()) {
        throw Rejection{QStringLiteral("no \"time\" number")};
    }
    const double secs = value.toDouble();
    if (!isWhole(secs) || secs < 0.0 || secs > lastSecs) {
        throw Rejection{QStringLiteral("the time is not a number of whole seconds since 1970")};
    }
    return static_cast<qint64>(secs);
}

QString parseObisCode(const QJsonValue& value) {
    QString code = value.toString();
    if (code.isEmpty()) {
        throw Rejection{QStringLiteral("no \"obis\" text")};
    }
    return code;
}

QVariant parseNumber(double number, bool isQuantity) {
    const bool fits =
        number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max();
    if (!isQuantity && fits && isWhole(number)) {
        return static_cast<int>(number);
    }
    return number;
}

QVariant parseValue(const QJsonValue& value, bool isQuantity) {
    switch (value.type()) {
    case QJsonValue::Bool:
        return value.toBool();
    case QJsonValue::Double:
        return parseNumber(value.toDouble(), isQuantity);
    case QJsonValue::String:
        return value.toString();
    case QJsonValue::Array:
        return QString::fromUtf8(QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact));
    default:
        throw Rejection{QStringLiteral("no \"value\"")};
    }
}

MeterReading parseReading(const QJsonObject& fields, int lineNumber) {
    MeterReading reading;
    reading.lineNumber = lineNumber;
    reading.timeSecs = parseTime(fields.value(QLatin1String("time")));
    reading.obisCode = parseObisCode(fields.value(QLatin1String("obis")));
    reading.unit = fields.value(QLatin1String("unit")).toString();
    reading.value = parseValue(fields.value(QLatin1String("value")), !reading.unit.isEmpty());
    return reading;
}

} // namespace

MeterReadingFile readMeterReadings(QIODevice& input) {
    QHash<QPair<qint64, QString>, int> lines;
    return readRecords(input, [&lines](const QJsonObject& fields, int lineNumber) {
        auto reading = parseReading(fields, lineNumber);
        const int earlier = lines.value({reading.timeSecs, reading.obisCode});
        if (earlier != 0) {
            throw Rejection{
                QStringLiteral("the same time and OBIS code as in line %1").arg(earlier)};
        }
        lines.insert({reading.timeSecs, reading.obisCode}, lineNumber);
        return reading;
    });
}

int deviceNumber(const MeterReadingFile& file) {
    constexpr int digits = 8;
    const auto serial =
        std::ranges::find(file.records, QLatin1String("0-0:96.1.1"), &MeterReading::obisCode);
    if (serial == file.records.end()) {
        throw Failure(QStringLiteral("no line of %1 has the meter's serial number (0-0:96.1.1)")
                          .arg(file.name));
    }
    // The meter sends the characters of its serial number as hexadecimal digits.
    const auto text = QString::fromLatin1(QByteArray::fromHex(serial->value.toString().toLatin1()));
    bool valid = false;
    const int number = text.right(digits).toInt(&valid);
    if (!valid || number < 0) {
        throw Failure(QStringLiteral("%1, line %2: the meter's serial number \"%3\" does not end "
                                     "in digits")
                          .arg(file.name)
                          .arg(serial->lineNumber)
                          .arg(text));
    }
    return number;
}

} // namespace host
