#include "model/bson/json_document.h"

#include "model/bson/bson_builder.h"
#include "model/bson/utf8_text.h"
#include "model/json/exact_numbers.h"

#include <QJsonValue>
#include <QString>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>
#include <utility>

namespace bson_utils {

namespace {

/// How the content of commands, states and queues is stored: every number a double, nulls left out.
struct plain_content {
    static constexpr bool keepsNulls = false;
    static constexpr int maxDepth = std::numeric_limits<int>::max();

    static bool takes(const QString& /*text*/, const utf8_text& /*utf8*/) { return true; }
    static bool takesKey(const QString& /*key*/, const utf8_text& /*utf8*/) { return true; }
    static bool append(bson_builder& parent, std::string_view key, double number) {
        parent.appendDouble(key, number);
        return true;
    }
};

/// What libbson's reader would make of an ordinary document's text.
struct ordinary_text {
    static constexpr bool keepsNulls = true;
    /// Fewer than the reader takes; deeper documents are its business.
    static constexpr int maxDepth = 64;
    /// Far above the smallest numbers, which strtod() reports as out of range.
    static constexpr double fractionLimit = 1e-290;

    static bool takes(const QString& text, const utf8_text& utf8) {
        if (utf8.isAscii()) {
            return utf8.view().find('\0') == std::string_view::npos;
        }
        return std::ranges::none_of(text, [](QChar c) { return c.isNull() || c.isSurrogate(); });
    }

    static bool takesKey(const QString& key, const utf8_text& utf8) {
        return !key.isEmpty() && !key.startsWith(QLatin1Char('$')) && takes(key, utf8);
    }

    static bool append(bson_builder& parent, std::string_view key, double number) {
        const double magnitude = std::abs(number);
        // From that limit on a double does not tell which whole number was meant. The negation is
        // for not-a-number.
        if (!(magnitude < static_cast<double>(wholeLimit)) ||
            (number == 0 && std::signbit(number))) {
            return false;
        }
        if (std::trunc(number) != number) {
            parent.appendDouble(key, number);
            return magnitude > fractionLimit;
        }
        const auto whole = static_cast<std::int64_t>(number);
        if (std::in_range<std::int32_t>(whole)) {
            parent.appendInt32(key, static_cast<std::int32_t>(whole));
        } else {
            parent.appendInt64(key, whole);
        }
        return true;
    }
};

/// Appends JSON values in a way of storing them. Each part is false, and what was appended of no
/// use, at the first thing that the way does not take.
template <typename Way>
struct writer {
    static bool appendMembers(bson_builder& document, const QJsonObject& json, int depth) {
        for (auto member = json.constBegin(); member != json.constEnd(); ++member) {
            const QString key = member.key();
            const utf8_text utf8{key};
            if (!Way::takesKey(key, utf8) ||
                !append(document, utf8.view(), member.value(), depth)) {
                return false;
            }
        }
        return true;
    }

    static bool appendElements(bson_builder& array, const QJsonArray& json, int depth) {
        int index = 0;
        for (const QJsonValue& element : json) {
            if (!Way::keepsNulls && element.isNull()) {
                continue;
            }
            std::array<char, 12> digits{};
            const auto* const end = std::to_chars(digits.begin(), digits.end(), index++).ptr;
            if (!append(array, {digits.data(), end}, element, depth)) {
                return false;
            }
        }
        return true;
    }

    static bool append(bson_builder& parent, std::string_view key, const QJsonValue& value,
                       int depth) {
        bool taken = true;
        switch (value.type()) {
        case QJsonValue::Undefined: // is in no object or array
        case QJsonValue::Null:
            if (Way::keepsNulls) {
                parent.appendNull(key);
            }
            return true;
        case QJsonValue::Bool:
            parent.appendBool(key, value.toBool());
            return true;
        case QJsonValue::Double:
            return Way::append(parent, key, value.toDouble());
        case QJsonValue::String: {
            const QString text = value.toString();
            const utf8_text utf8{text};
            parent.appendUtf8(key, utf8.view());
            return Way::takes(text, utf8);
        }
        case QJsonValue::Array:
            parent.appendArray(key, [&](bson_builder& array) {
                taken = depth < Way::maxDepth && appendElements(array, value.toArray(), depth + 1);
            });
            return taken;
        case QJsonValue::Object:
            parent.appendDocument(key, [&](bson_builder& document) {
                taken =
                    depth < Way::maxDepth && appendMembers(document, value.toObject(), depth + 1);
            });
            return taken;
        }
        return false;
    }
};

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

bsoncxx::v1::document::value toBson(const QJsonObject& json) {
    bson_builder document;
    writer<plain_content>::appendMembers(document, json, 0);
    return document.take();
}

bsoncxx::v1::array::value toBson(const QJsonArray& json) {
    bson_builder array;
    writer<plain_content>::appendElements(array, json, 0);
    return array.takeArray();
}

bsoncxx::v1::document::value toBson(const QJsonDocument& json) {
    auto ordinary = writeOrdinary(json);
    return ordinary ? *std::move(ordinary) : writeText(json);
}

std::optional<bsoncxx::v1::document::value> writeOrdinary(const QJsonDocument& json) {
    bson_builder document;
    const bool ordinary = (json.isEmpty() || json.isObject()) &&
                          writer<ordinary_text>::appendMembers(document, json.object(), 0);
    return ordinary ? std::optional{document.take()} : std::nullopt;
}

bsoncxx::v1::document::value writeText(const QJsonDocument& json) {
    const QByteArray text = json.isEmpty() ? QByteArrayLiteral("{}") : readableText(json);
    bson_builder document;
    document.readJson({text.constData(), static_cast<std::size_t>(text.size())});
    return document.take();
}

} // namespace bson_utils
