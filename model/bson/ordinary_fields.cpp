#include "model/bson/ordinary_fields.h"

#include "model/bson/json_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <utility>

namespace bson_utils {

namespace {

/// From here on a double does not hold every whole number.
constexpr std::int64_t wholeLimit = std::int64_t{1} << 53;

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

ordinary_fields::ordinary_fields(const bsoncxx::v1::document::view& document, query_memory& memory)
    : m_memory(memory),
      m_ordinary(bson_iter_init_from_data(&m_element, document.data(), document.size())) {}

bool ordinary_fields::next(std::string_view key) {
    m_ordinary = m_ordinary && bson_iter_next(&m_element) &&
                 key == std::string_view{bson_iter_key(&m_element), bson_iter_key_len(&m_element)};
    return m_ordinary;
}

bool ordinary_fields::next(std::string_view key, bson_type_t type) {
    m_ordinary = next(key) && bson_iter_type(&m_element) == type;
    return m_ordinary;
}

std::string_view ordinary_fields::utf8() const {
    std::uint32_t length = 0;
    const char* text = bson_iter_utf8(&m_element, &length);
    return {text, length};
}

template <typename Result>
Result ordinary_fields::orGiveUp(std::optional<Result> result) {
    m_ordinary = m_ordinary && result.has_value();
    return m_ordinary ? *std::move(result) : Result{};
}

QString ordinary_fields::sharedText() {
    const std::string_view text = utf8();
    return isAscii(text) ? m_memory.texts.fromAscii(text) : orGiveUp(ordinaryText(text));
}

std::int64_t ordinary_fields::int64(std::string_view key) {
    return next(key, BSON_TYPE_INT64) ? bson_iter_int64(&m_element) : 0;
}

int ordinary_fields::number(std::string_view key) {
    return next(key, BSON_TYPE_INT32) ? bson_iter_int32(&m_element) : 0;
}

QString ordinary_fields::text(std::string_view key) {
    return next(key, BSON_TYPE_UTF8) ? sharedText() : QString{};
}

quint64 ordinary_fields::hexNumber(std::string_view key) {
    quint64 number = 0;
    if (next(key, BSON_TYPE_UTF8)) {
        const std::string_view digits = utf8();
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
    return orGiveUp(bytesOf(utf8()));
}

QDateTime ordinary_fields::localTime(std::string_view key) {
    const std::int64_t msecs = next(key, BSON_TYPE_DATE_TIME) ? bson_iter_date_time(&m_element) : 0;
    m_ordinary = m_ordinary && -wholeLimit < msecs && msecs < wholeLimit;
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
        bson_oid_to_string(bson_iter_oid(&m_element), digits.data());
    }
    return QString::fromLatin1(digits.data());
}

QJsonObject ordinary_fields::object(std::string_view key) {
    if (!next(key, BSON_TYPE_DOCUMENT)) {
        return {};
    }
    std::uint32_t size = 0;
    const std::uint8_t* data = nullptr;
    bson_iter_document(&m_element, &size, &data);
    return orGiveUp(m_memory.objects.object(bsoncxx::v1::document::view{data, size}));
}

QVariant ordinary_fields::value(std::string_view key) {
    switch (next(key) ? bson_iter_type(&m_element) : BSON_TYPE_EOD) {
    case BSON_TYPE_DOUBLE:
        return orGiveUp(finite(bson_iter_double(&m_element)));
    case BSON_TYPE_INT32:
        return static_cast<double>(bson_iter_int32(&m_element));
    case BSON_TYPE_BOOL:
        return bson_iter_bool(&m_element);
    case BSON_TYPE_UTF8:
        return sharedText();
    default:
        m_ordinary = false;
        return {};
    }
}

bool ordinary_fields::ordinary() {
    // Damage ends the elements too, but leaves its place.
    return m_ordinary && !bson_iter_next(&m_element) && m_element.err_off == 0;
}

} // namespace bson_utils
