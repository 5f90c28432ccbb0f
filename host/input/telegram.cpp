#include "host/input/telegram.h"

#include "host/input/line_time.h"

#include <algorithm>

namespace host {

namespace {

constexpr int meterIdDigits = 8;

bool isHexDigit(QChar character) {
    const auto code = character.toLower().unicode();
    return (code >= u'0' && code <= u'9') || (code >= u'a' && code <= u'f');
}

bool isDecimalDigit(QChar character) {
    return character.unicode() >= u'0' && character.unicode() <= u'9';
}

QString parseMeterId(const QJsonValue& value) {
    if (value.isUndefined() || value.isNull()) {
        throw Rejection{QStringLiteral("the meter's id is missing")};
    }
    if (!value.isString()) {
        throw Rejection{QStringLiteral("the meter's id is not text")};
    }
    const QString id = value.toString();
    const bool decimal = std::ranges::all_of(id, isDecimalDigit);
    if (decimal && id.size() > meterIdDigits) {
        throw Rejection{
            QStringLiteral("the meter's id \"%1\" is too large: it has more than eight digits")
                .arg(id)};
    }
    if (!decimal || id.size() != meterIdDigits) {
        throw Rejection{
            QStringLiteral("the meter's id \"%1\" is not eight decimal digits").arg(id)};
    }
    return id;
}

QString parseText(const QJsonObject& decoded, QLatin1String key) {
    QString text = decoded.value(key).toString();
    if (text.isEmpty()) {
        throw Rejection{QStringLiteral("the decoded readings have no \"%1\" text").arg(key)};
    }
    return text;
}

} // namespace

QByteArray parsePayload(const QJsonValue& value) {
    if (!value.isString()) {
        throw Rejection{QStringLiteral("no \"telegram\" text")};
    }
    const QString digits = value.toString();
    if (digits.isEmpty()) {
        throw Rejection{QStringLiteral("the telegram is empty")};
    }
    // QByteArray::fromHex skips what it does not understand, so the digits are checked before.
    const auto* const stranger = std::ranges::find_if_not(digits, isHexDigit);
    if (stranger != digits.end()) {
        throw Rejection{
            QStringLiteral("the telegram's character %1, \"%2\", is not a hexadecimal digit")
                .arg(stranger - digits.begin() + 1)
                .arg(*stranger)};
    }
    if (digits.size() % 2 != 0) {
        throw Rejection{QStringLiteral("the telegram has an odd number of hexadecimal digits, %1")
                            .arg(digits.size())};
    }
    return QByteArray::fromHex(digits.toLatin1());
}

void takeDecoded(Telegram& telegram, const QJsonObject& decoded) {
    telegram.decoded = decoded;
    telegram.meterId = parseMeterId(decoded.value(QLatin1String("id")));
    telegram.deviceNumber = telegram.meterId.toInt();
    telegram.meterMake = parseText(decoded, QLatin1String("meter"));
    telegram.medium = parseText(decoded, QLatin1String("media"));
}

Telegram parseTelegram(const QJsonObject& fields, int lineNumber) {
    Telegram telegram;
    telegram.lineNumber = lineNumber;
    telegram.payload = parsePayload(fields.value(QLatin1String("telegram")));
    if (const auto time = fields.value(QLatin1String("time")); !time.isUndefined()) {
        telegram.timeSecs = parseSecs(time);
    }

    const auto decoded = fields.value(QLatin1String("decoded"));
    if (!decoded.isObject()) {
        throw Rejection{QStringLiteral("no \"decoded\" object")};
    }
    takeDecoded(telegram, decoded.toObject());
    return telegram;
}

TelegramFile readTelegrams(QIODevice& input) {
    return readRecords(input, parseTelegram);
}

} // namespace host
