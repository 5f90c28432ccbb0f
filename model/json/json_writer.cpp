#include "model/json/json_writer.h"

#include "model/json/exact_numbers.h"

#include <QJsonArray>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <utility>

namespace {

/// Most texts fit, and the system has a block of that size at hand.
constexpr int usualSize = 1000;
/// Longer texts are Qt's; sums of sizes stay far within an int.
constexpr int maxSize = 1 << 27;

/// Smaller fractions are written with an exponent.
constexpr double fractionLimit = 0.0001;
constexpr int maxNumberSize = 32;

constexpr std::string_view hexDigits = "0123456789abcdef";

/// What follows the backslash; zero if that is only the number of the character.
constexpr char shortEscape(char16_t unit) {
    switch (unit) {
    case '"':
    case '\\':
        return static_cast<char>(unit);
    case '\b':
        return 'b';
    case '\f':
        return 'f';
    case '\n':
        return 'n';
    case '\r':
        return 'r';
    case '\t':
        return 't';
    default:
        return 0;
    }
}

constexpr bool isPlain(char16_t unit) {
    return unit >= 0x20 && unit < 0x80 && unit != '"' && unit != '\\';
}

char* writeEscape(char* to, char16_t unit) {
    *to++ = '\\';
    if (const char letter = shortEscape(unit)) {
        *to++ = letter;
        return to;
    }
    to = std::copy_n("u00", 3, to);
    *to++ = hexDigits[unit >> 4U];
    *to++ = hexDigits[unit & 0xFU];
    return to;
}

char* writeUtf8(char* to, char16_t unit) {
    if (unit < 0x800) {
        *to++ = static_cast<char>(0xC0U | unit >> 6U);
    } else {
        *to++ = static_cast<char>(0xE0U | unit >> 12U);
        *to++ = static_cast<char>(0x80U | (unit >> 6U & 0x3FU));
    }
    *to++ = static_cast<char>(0x80U | (unit & 0x3FU));
    return to;
}

/// The end of what was written; nothing if there are surrogates.
char* writeAny(char* to, const QString& text) {
    for (const QChar character : text) {
        const char16_t unit = character.unicode();
        if (isPlain(unit)) {
            *to++ = static_cast<char>(unit);
        } else if (unit < 0x80) {
            to = writeEscape(to, unit);
        } else if (!character.isSurrogate()) {
            to = writeUtf8(to, unit);
        } else {
            return nullptr;
        }
    }
    return to;
}

/// The same; nothing unless all are plain, as nearly always.
char* writePlain(char* to, const QString& text) {
    bool arePlain = true;
    for (const QChar character : text) {
        arePlain &= isPlain(character.unicode());
        *to++ = static_cast<char>(character.unicode());
    }
    return arePlain ? to : nullptr;
}

char* write(char* to, std::string_view ascii) {
    std::memcpy(to, ascii.data(), ascii.size());
    return to + ascii.size();
}

} // namespace

json_writer::json_writer()
    : m_text(usualSize, Qt::Uninitialized), m_end(m_text.data()), m_limit(m_end + usualSize) {}

bool json_writer::key(const QString& key) {
    if (!makeRoom(1)) {
        return false;
    }
    writeComma('{');
    return value(key) && append(":");
}

bool json_writer::name(std::string_view name) {
    if (!makeRoom(static_cast<int>(name.size()) + 4)) {
        return false;
    }
    writeComma('{');
    *m_end++ = '"';
    m_end = write(m_end, name);
    m_end = write(m_end, "\":");
    return true;
}

bool json_writer::value(const QString& text) {
    constexpr int maxUnitSize = 6;
    if (text.size() > maxSize / maxUnitSize || !makeRoom(maxUnitSize * text.size() + 2)) {
        return false;
    }
    *m_end++ = '"';
    char* end = writePlain(m_end, text);
    if (!end) {
        end = writeAny(m_end, text);
    }
    if (!end) {
        return false;
    }
    *end++ = '"';
    m_end = end;
    return true;
}

bool json_writer::value(int number) {
    if (!makeRoom(maxNumberSize)) {
        return false;
    }
    m_end = std::to_chars(m_end, m_limit, number).ptr;
    return true;
}

bool json_writer::value(double number) {
    const double size = std::abs(number);
    // Not a number is none of these.
    const bool isOrdinary = (size >= fractionLimit && size < static_cast<double>(wholeLimit)) ||
                            (size == 0.0 && !std::signbit(number));
    if (!isOrdinary || !makeRoom(maxNumberSize)) {
        return false;
    }
    const auto whole = static_cast<qint64>(number);
    m_end = static_cast<double>(whole) == number
                ? std::to_chars(m_end, m_limit, whole).ptr
                : std::to_chars(m_end, m_limit, number, std::chars_format::fixed).ptr;
    return true;
}

bool json_writer::value(bool flag) {
    return append(flag ? "true" : "false");
}

bool json_writer::value(const QJsonObject& object) {
    if (!beginObject()) {
        return false;
    }
    const auto end = object.constEnd();
    for (auto member = object.constBegin(); member != end; ++member) {
        if (!key(member.key()) || !value(member.value())) {
            return false;
        }
    }
    return endObject();
}

bool json_writer::value(const QJsonArray& array) {
    if (!append("[")) {
        return false;
    }
    const auto end = array.constEnd();
    for (auto element = array.constBegin(); element != end; ++element) {
        if (!makeRoom(1)) {
            return false;
        }
        writeComma('[');
        if (!value(*element)) {
            return false;
        }
    }
    return append("]");
}

bool json_writer::value(const QJsonValue& json) {
    switch (json.type()) {
    case QJsonValue::Null:
        return append("null");
    case QJsonValue::Bool:
        return value(json.toBool());
    case QJsonValue::Double:
        return value(json.toDouble());
    case QJsonValue::String:
        return value(json.toString());
    case QJsonValue::Array:
        return value(json.toArray());
    case QJsonValue::Object:
        return value(json.toObject());
    default:
        return false;
    }
}

QByteArray json_writer::take() {
    m_text.truncate(static_cast<int>(m_end - m_text.constData()));
    m_end = nullptr;
    m_limit = nullptr;
    return std::exchange(m_text, QByteArray());
}

bool json_writer::append(std::string_view ascii) {
    if (!makeRoom(static_cast<int>(ascii.size()))) {
        return false;
    }
    m_end = write(m_end, ascii);
    return true;
}

/// Unless it is the first one after the bracket; a text does not end with that but with its quote.
void json_writer::writeComma(char bracket) {
    if (m_end[-1] != bracket) {
        *m_end++ = ',';
    }
}

bool json_writer::grow(int size) {
    const auto used = static_cast<int>(m_end - m_text.constData());
    if (size > maxSize - used) {
        return false;
    }
    m_text.resize(std::max(used + size, 2 * m_text.size()));
    m_end = m_text.data() + used;
    m_limit = m_text.data() + m_text.size();
    return true;
}
