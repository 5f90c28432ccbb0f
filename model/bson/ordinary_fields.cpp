#include "model/bson/ordinary_fields.h"

#include "model/bson/json_text.h"
#include "model/json/exact_numbers.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <utility>

namespace bson_utils {

namespace {

constexpr qint64 msecsPerSec = 1000;

std::optional<double> finite(double number) {
    return std::isfinite(number) ? std::optional{number} : std::nullopt;
}

constexpr std::uint8_t noDigit = 16;

constexpr auto digitValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(noDigit);
    for (std::uint8_t value = 0; value < noDigit; ++value) {
        values[static_cast<std::uint8_t>("0123456789abcdef"[value])] = value;
        values[static_cast<std::uint8_t>("0123456789ABCDEF"[value])] = value;
    }
    return values;
}();

/// Nothing unless these are whole bytes in hexadecimal digits.
std::optional<QByteArray> bytesOf(std::string_view digits) {
    QByteArray bytes{static_cast<int>(digits.size() / 2), Qt::Uninitialized};
    std::uint32_t seen = digits.size() % 2 == 0 ? 0 : noDigit;
    const auto valueOf = [](char digit) -> std::uint32_t {
        return digitValues[static_cast<std::uint8_t>(digit)];
    };
    const char* digit = digits.data();
    for (char& byte : bytes) {
        const std::uint32_t high = valueOf(*digit++);
        const std::uint32_t low = valueOf(*digit++);
        seen |= high | low;
        byte = static_cast<char>(high << 4U | low);
    }
    return seen < noDigit ? std::optional{std::move(bytes)} : std::nullopt;
}

} // namespace

bool ordinary_fields::next(std::string_view key) {
    m_ordinary = m_ordinary && m_element.next(key);
    return m_ordinary;
}

bool ordinary_fields::next(std::string_view key, bson_type_t type) {
    m_ordinary = next(key) && m_element.type() == type;
    return m_ordinary;
}

template <typename Result>
Result ordinary_fields::orGiveUp(std::optional<Result> result) {
    m_ordinary = m_ordinary && result.has_value();
    return m_ordinary ? *std::move(result) : Result{};
}

QString ordinary_fields::sharedText() {
    const std::string_view text = m_element.utf8();
    return isAscii(text) ? m_memory.texts.fromAscii(text) : orGiveUp(ordinaryText(text));
}

std::int64_t ordinary_fields::int64(std::string_view key) {
    return next(key, BSON_TYPE_INT64) ? m_element.int64() : 0;
}

int ordinary_fields::number(std::string_view key) {
    return next(key, BSON_TYPE_INT32) ? m_element.int32() : 0;
}

QString ordinary_fields::text(std::string_view key) {
    return next(key, BSON_TYPE_UTF8) ? sharedText() : QString{};
}

quint64 ordinary_fields::hexNumber(std::string_view key) {
    quint64 number = 0;
    if (next(key, BSON_TYPE_UTF8)) {
        const std::string_view digits = m_element.utf8();
        const auto [end, error] =
            std::from_chars(digits.data(), digits.data() + digits.size(), number, 16);
        m_ordinary = error == std::errc{} && end == digits.data() + digits.size();
    }
    return number;
}

QByteArray ordinary_fields::hexBytes(std::string_view key) {
    if (!next(key, BSON_TYPE_UTF8)) {
        return {};
    }
    return orGiveUp(bytesOf(m_element.utf8()));
}

QDateTime ordinary_fields::localTime(std::string_view key) {
    const std::int64_t msecs = next(key, BSON_TYPE_DATE_TIME) ? m_element.int64() : 0;
    m_ordinary = m_ordinary && isExactAsDouble(msecs);
    return m_memory.times.at(msecs);
}

QDateTime ordinary_fields::localSecs(std::string_view key) {
    return m_memory.times.at(msecsPerSec * static_cast<std::uint32_t>(int64(key)));
}

QDateTime ordinary_fields::utcSecs(std::string_view key) {
    const std::int64_t secs = int64(key);
    m_ordinary = m_ordinary && std::in_range<int>(secs);
    return QDateTime::fromSecsSinceEpoch(secs, Qt::UTC);
}

QString ordinary_fields::oid(std::string_view key) {
    std::array<char, 25> digits{};
    if (next(key, BSON_TYPE_OID)) {
        bson_oid_t id;
        std::ranges::copy(m_element.bytes(), std::begin(id.bytes));
        bson_oid_to_string(&id, digits.data());
    }
    return QString::fromLatin1(digits.data());
}

QJsonObject ordinary_fields::object(std::string_view key) {
    if (!next(key, BSON_TYPE_DOCUMENT)) {
        return {};
    }
    return orGiveUp(m_memory.objects.object(m_element.document()));
}

QVariant ordinary_fields::value(std::string_view key) {
    switch (next(key) ? m_element.type() : std::uint8_t{BSON_TYPE_EOD}) {
    case BSON_TYPE_DOUBLE:
        return orGiveUp(finite(m_element.real()));
    case BSON_TYPE_INT32:
        return static_cast<double>(m_element.int32());
    case BSON_TYPE_BOOL:
        return m_element.boolean();
    case BSON_TYPE_UTF8:
        return sharedText();
    default:
        m_ordinary = false;
        return {};
    }
}

bool ordinary_fields::ordinary() {
    return m_ordinary && m_element.atEnd();
}

} // namespace bson_utils
