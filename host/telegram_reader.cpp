#include "host/telegram_reader.h"

#include <QJsonDocument>
#include <QJsonParseError>

#include <algorithm>
#include <utility>

namespace host {

namespace {

constexpr int meterIdDigits = 8;

/// Thrown by the parsers below: why the line is no telegram.
struct Rejection {
    QString reason;
};

bool isHexDigit(QChar character) {
    const auto code = character.toLower().unicode();
    return (code >= u'0' && code <= u'9') || (code >= u'a' && code <= u'f');
}

bool isDecimalDigit(QChar character) {
    return character.unicode() >= u'0' && character.unicode() <= u'9';
}

QJsonObject parseObject(const QByteArray& line) {
    QJsonParseError error;
    const auto document = QJsonDocument::fromJson(line, &error);
    if (error.error != QJsonParseError::NoError) {
        throw Rejection{QStringLiteral("not JSON: %1 at byte %2")
                            .arg(error.errorString())
                            .arg(error.offset + 1)};
    }
    if (!document.isObject()) {
        throw Rejection{QStringLiteral("not a JSON object")};
    }
    return document.object();
}

QByteArray parsePayload(const QJsonValue& value) {
    if (!value.isString()) {
        throw Rejection{QStringLiteral("no \"telegram\" text")};
    }
    const QString digits = value.toString();
    if (digits.isEmpty()) {
        throw Rejection{QStringLiteral("the telegram is empty")};
    }
    // QByteArray::fromHex skips what it does not understand, so the digits are checked before.
    const auto* const stranger = std::find_if_not(digits.begin(), digits.end(), isHexDigit);
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

QString parseMeterId(const QJsonValue& value) {
    if (value.isUndefined() || value.isNull()) {
        throw Rejection{QStringLiteral("the meter's id is missing")};
    }
    if (!value.isString()) {
        throw Rejection{QStringLiteral("the meter's id is not text")};
    }
    const QString id = value.toString();
    const bool decimal = std::all_of(id.begin(), id.end(), isDecimalDigit);
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

Telegram parseTelegram(const QByteArray& line, int lineNumber) {
    const auto fields = parseObject(line);
    Telegram telegram;
    telegram.lineNumber = lineNumber;
    telegram.payload = parsePayload(fields.value(QLatin1String("telegram")));

    const auto decoded = fields.value(QLatin1String("decoded"));
    if (!decoded.isObject()) {
        throw Rejection{QStringLiteral("no \"decoded\" object")};
    }
    telegram.decoded = decoded.toObject();
    telegram.meterId = parseMeterId(telegram.decoded.value(QLatin1String("id")));
    telegram.deviceNumber = telegram.meterId.toInt();
    telegram.meterMake = parseText(telegram.decoded, QLatin1String("meter"));
    telegram.medium = parseText(telegram.decoded, QLatin1String("media"));
    return telegram;
}

} // namespace

TelegramFile readTelegrams(QIODevice& input) {
    TelegramFile file;
    for (int lineNumber = 1; !input.atEnd(); ++lineNumber) {
        const auto line = input.readLine();
        if (line.trimmed().isEmpty()) {
            continue;
        }
        ++file.linesRead;
        try {
            file.telegrams.push_back(parseTelegram(line, lineNumber));
        } catch (const Rejection& rejection) {
            file.rejected.push_back({lineNumber, rejection.reason});
        }
    }
    return file;
}

} // namespace host
