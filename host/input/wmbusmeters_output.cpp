#include "host/input/wmbusmeters_output.h"

#include <QDateTime>
#include <QRegularExpression>

#include <array>

namespace host {

namespace {

constexpr std::array runKeys = {"_", "name", "timestamp", "device", "rssi_dbm"};
constexpr std::array receptionKeys = {"name", "device", "rssi_dbm"};

qint64 parseTimestamp(const QJsonValue& value) {
    const auto time = QDateTime::fromString(value.toString(), Qt::ISODate);
    if (!time.isValid() || time.toSecsSinceEpoch() < 0) {
        throw Rejection{QStringLiteral("the \"timestamp\" is no time as 2026-11-22T10:00:00Z")};
    }
    return time.toSecsSinceEpoch();
}

} // namespace

QJsonObject meterReadings(QJsonObject printed) {
    for (const auto* const key : runKeys) {
        printed.remove(QLatin1String(key));
    }
    return printed;
}

bool isWmbusmeters(const QJsonObject& fields) {
    return fields.contains(QLatin1String("id")) && fields.contains(QLatin1String("meter")) &&
           fields.contains(QLatin1String("media"));
}

Telegram parseWmbusmeters(const QJsonObject& fields, int lineNumber) {
    Telegram telegram;
    telegram.lineNumber = lineNumber;
    takeDecoded(telegram, meterReadings(fields));
    if (const auto time = fields.value(QLatin1String("timestamp")); !time.isUndefined()) {
        telegram.timeSecs = parseTimestamp(time);
    }
    for (const auto* const key : receptionKeys) {
        if (const auto value = fields.value(QLatin1String(key)); !value.isUndefined()) {
            telegram.reception.insert(QLatin1String(key), value);
        }
    }
    return telegram;
}

std::optional<QByteArray> parseLoggedTelegram(const QByteArray& line) {
    static const QRegularExpression form(QStringLiteral("^telegram=\\|([0-9A-Fa-f_]+)\\|"));
    const auto match = form.match(QString::fromLatin1(line));
    if (!match.hasMatch()) {
        return {};
    }
    return QByteArray::fromHex(match.captured(1).remove(QLatin1Char('_')).toLatin1());
}

} // namespace host
