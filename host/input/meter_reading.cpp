#include "host/input/meter_reading.h"

#include "host/failure.h"
#include "host/input/line_time.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QPair>

#include <algorithm>
#include <cmath>
#include <limits>

namespace host {

namespace {

bool isWhole(double number) {
    return std::trunc(number) == number;
}

QString parseObisCode(const QJsonValue& value) {
    QString code = value.toString();
    if (code.isEmpty()) {
        throw Rejection{QStringLiteral("no \"obis\" text")};
    }
    return code;
}

/// The meter sends the characters of its serial number as hexadecimal digits.
QString serialText(const MeterReading& reading) {
    return QString::fromLatin1(QByteArray::fromHex(reading.value.toString().toLatin1()));
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

} // namespace

MeterReading parseMeterReading(const QJsonObject& fields, int lineNumber) {
    MeterReading reading;
    reading.lineNumber = lineNumber;
    reading.timeSecs = parseSecs(fields.value(QLatin1String("time")));
    reading.obisCode = parseObisCode(fields.value(QLatin1String("obis")));
    reading.unit = fields.value(QLatin1String("unit")).toString();
    reading.value = parseValue(fields.value(QLatin1String("value")), !reading.unit.isEmpty());
    return reading;
}

MeterReadingFile readMeterReadings(QIODevice& input) {
    QHash<QPair<qint64, QString>, int> lines;
    return readRecords(input, [&lines](const QJsonObject& fields, int lineNumber) {
        auto reading = parseMeterReading(fields, lineNumber);
        const int earlier = lines.value({reading.timeSecs, reading.obisCode});
        if (earlier != 0) {
            throw Rejection{
                QStringLiteral("the same time and OBIS code as in line %1").arg(earlier)};
        }
        lines.insert({reading.timeSecs, reading.obisCode}, lineNumber);
        return reading;
    });
}

std::optional<int> serialNumber(const MeterReading& reading) {
    constexpr int digits = 8;
    if (reading.obisCode != QLatin1String("0-0:96.1.1")) {
        return {};
    }
    bool valid = false;
    const int number = serialText(reading).right(digits).toInt(&valid);
    return valid && number >= 0 ? std::optional(number) : std::nullopt;
}

int deviceNumber(const MeterReadingFile& file) {
    const auto serial =
        std::ranges::find(file.records, QLatin1String("0-0:96.1.1"), &MeterReading::obisCode);
    if (serial == file.records.end()) {
        throw Failure(QStringLiteral("no line of %1 has the meter's serial number (0-0:96.1.1)")
                          .arg(file.name));
    }
    const auto number = serialNumber(*serial);
    if (!number) {
        throw Failure(QStringLiteral("%1, line %2: the meter's serial number \"%3\" does not end "
                                     "in digits")
                          .arg(file.name)
                          .arg(serial->lineNumber)
                          .arg(serialText(*serial)));
    }
    return *number;
}

} // namespace host
