#include "model/bson/json_document.h"

#include "model/bson/bson_builder.h"
#include "model/bson/utf8_text.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

namespace bson_utils {

namespace {

/// Fewer than libbson's reader takes; deeper documents are its business.
constexpr int maxDepth = 64;

/// From here on a double does not tell which whole number was meant.
constexpr double wholeLimit = 9007199254740992.0;

/// Far above the smallest numbers, which strtod() reports as out of range.
constexpr double fractionLimit = 1e-290;

bool isOrdinary(const utf8_text& utf8, const QString& text) {
    if (utf8.isAscii()) {
        return utf8.view().find('\0') == std::string_view::npos;
    }
    return std::ranges::none_of(text, [](QChar c) { return c.isNull() || c.isSurrogate(); });
}

bool appendNumber(bson_builder& parent, std::string_view key, double number) {
    const double magnitude = std::abs(number);
    // The negation is for not-a-number.
    if (!(magnitude < wholeLimit) || (number == 0 && std::signbit(number))) {
        return false;
    }
    if (std::trunc(number) != number) {
        parent.appendDouble(key, number);
        return magnitude > fractionLimit;
    }
    if (number >= std::numeric_limits<std::int32_t>::min() &&
        number <= std::numeric_limits<std::int32_t>::max()) {
        parent.appendInt32(key, static_cast<std::int32_t>(number));
    } else {
        parent.appendInt64(key, static_cast<std::int64_t>(number));
    }
    return true;
}

bool appendMembers(bson_builder& document, const QJsonObject& json, int depth);
bool appendElements(bson_builder& array, const QJsonArray& json, int depth);

bool appendValue(bson_builder& parent, std::string_view key, const QJsonValue& value, int depth) {
    bool ordinary = depth < maxDepth;
    switch (value.type()) {
    case QJsonValue::Null:
        parent.appendNull(key);
        break;
    case QJsonValue::Bool:
        parent.appendBool(key, value.toBool());
        break;
    case QJsonValue::Double:
        return appendNumber(parent, key, value.toDouble());
    case QJsonValue::String: {
        const QString text = value.toString();
        const utf8_text utf8{text};
        parent.appendUtf8(key, utf8.view());
        return isOrdinary(utf8, text);
    }
    case QJsonValue::Array:
        if (ordinary) {
            parent.appendArray(key, [&](bson_builder& array) {
                ordinary = appendElements(array, value.toArray(), depth + 1);
            });
        }
        break;
    case QJsonValue::Object:
        if (ordinary) {
            parent.appendDocument(key, [&](bson_builder& document) {
                ordinary = appendMembers(document, value.toObject(), depth + 1);
            });
        }
        break;
    case QJsonValue::Undefined:
        return false;
    }
    return ordinary;
}

bool appendMembers(bson_builder& document, const QJsonObject& json, int depth) {
    for (auto member = json.constBegin(); member != json.constEnd(); ++member) {
        const QString key = member.key();
        const utf8_text utf8{key};
        if (key.isEmpty() || key.startsWith(QLatin1Char('$')) || !isOrdinary(utf8, key) ||
            !appendValue(document, utf8.view(), member.value(), depth)) {
            return false;
        }
    }
    return true;
}

bool appendElements(bson_builder& array, const QJsonArray& json, int depth) {
    for (int index = 0; index < json.size(); ++index) {
        std::array<char, 12> digits{};
        const auto* const end =
            std::to_chars(digits.data(), digits.data() + digits.size(), index).ptr;
        if (!appendValue(array, {digits.data(), static_cast<std::size_t>(end - digits.data())},
                         json.at(index), depth)) {
            return false;
        }
    }
    return true;
}

// JSON text that libbson's reader takes for the numbers that Qt means by it. Qt prints a large
// whole double as plain digits, and the reader lets digits beyond 64 bits wrap around; with a
// fraction they are a double again.
QByteArray readableText(const QJsonDocument& json) {
    constexpr int digitsOfInt64 = 19;
    const QByteArray text = json.toJson(QJsonDocument::Compact);
    QByteArray readable;
    int copied = 0;
    bool inString = false;
    for (int at = 0; at < text.size(); ++at) {
        if (text[at] == '"') {
            inString = !inString;
        } else if (inString) {
            at += text[at] == '\\' ? 1 : 0;
        } else if (text[at] >= '1' && text[at] <= '9') {
            int end = at;
            while (end < text.size() && text[end] >= '0' && text[end] <= '9') {
                ++end;
            }
            const bool whole = text[end] != '.' && text[end] != 'e';
            bool fits = true;
            if (whole && end - at >= digitsOfInt64) {
                text.mid(at, end - at).toLongLong(&fits);
            }
            if (!fits) {
                readable += text.mid(copied, end - copied) + ".0";
                copied = end;
            }
            at = end - 1;
        }
    }
    return copied == 0 ? text : readable + text.mid(copied);
}

} // namespace

std::optional<bsoncxx::v1::document::value> writeOrdinary(const QJsonDocument& json) {
    bson_builder document;
    const bool ordinary =
        (json.isEmpty() || json.isObject()) && appendMembers(document, json.object(), 0);
    return ordinary ? std::optional{document.take()} : std::nullopt;
}

bsoncxx::v1::document::value writeText(const QJsonDocument& json) {
    const QByteArray text = json.isEmpty() ? QByteArrayLiteral("{}") : readableText(json);
    bson_builder document;
    document.readJson({text.constData(), static_cast<std::size_t>(text.size())});
    return document.take();
}

} // namespace bson_utils
