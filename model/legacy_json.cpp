#include "model/legacy_json.h"

#include "model/bson/bson_error.h"

#include <QJsonArray>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>

namespace bson_utils {

namespace {

/// Levels, the document's own included, whose elements libbson renders (BSON_MAX_RECURSION).
constexpr int maxDepth = 200;

/// Room for the text of most nested values, so that it need not grow.
constexpr std::size_t usualTextSize = 240;

bool isAscii(std::string_view text) {
    std::uint64_t bits = 0;
    std::size_t at = 0;
    for (; at + sizeof bits <= text.size(); at += sizeof bits) {
        std::uint64_t eight = 0;
        std::memcpy(&eight, text.data() + at, sizeof eight);
        bits |= eight;
    }
    for (; at < text.size(); ++at) {
        bits |= static_cast<unsigned char>(text[at]);
    }
    return (bits & 0x8080808080808080U) == 0;
}

// libbson accepts the two-byte form of the zero character in values, not in keys.
enum class zero { accepted, refused };

void checkUtf8(std::string_view text, zero zeros = zero::accepted) {
    if (!isAscii(text) && !bson_utf8_validate(text.data(), text.size(), zeros == zero::accepted)) {
        throw bson_error("cannot render a BSON document as JSON: invalid UTF-8");
    }
}

// What libbson writes as an escape; 0xC0 begins the two-byte form of the zero character.
bool needsEscape(char c) {
    const auto code = static_cast<unsigned char>(c);
    return code < 0x20 || c == '"' || c == '\\' || code == 0xC0;
}

// Nothing to escape and nothing to check; what nearly every text and key is.
bool isPlain(std::string_view text) {
    bool plain = true;
    for (const char c : text) {
        plain &= c >= 0x20 && c != '"' && c != '\\';
    }
    return plain;
}

// As Qt's JSON parser decodes a string of libbson's text. It keeps a leading byte order mark only
// if the text has an escape in it, which is how the parser chooses between its two ways.
QString decodeUtf8(std::string_view text) {
    if (isAscii(text)) {
        return QString::fromLatin1(text.data(), static_cast<int>(text.size()));
    }
    checkUtf8(text);
    if (text.find_first_of("\xC0\xEF") == std::string_view::npos) {
        return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
    }
    const bool escaped = std::ranges::any_of(text, needsEscape);
    std::string bytes{text};
    for (auto at = bytes.find("\xC0\x80"); at != std::string::npos;
         at = bytes.find("\xC0\x80", at)) {
        bytes.replace(at, 2, 1, '\0');
    }
    std::string_view rest = bytes;
    QString decoded;
    while (escaped && rest.starts_with("\xEF\xBB\xBF")) {
        decoded += QChar{QChar::ByteOrderMark};
        rest.remove_prefix(3);
    }
    return decoded + QString::fromUtf8(rest.data(), static_cast<int>(rest.size()));
}

std::string_view keyOf(const bson_iter_t& element) {
    return {bson_iter_key(&element), bson_iter_key_len(&element)};
}

std::string_view textOf(const bson_iter_t& element) {
    std::uint32_t length = 0;
    const char* text = BSON_ITER_HOLDS_SYMBOL(&element) ? bson_iter_symbol(&element, &length)
                                                        : bson_iter_utf8(&element, &length);
    return {text, length};
}

bson_iter_t childrenOf(const bson_iter_t& element) {
    bson_iter_t children;
    if (!bson_iter_recurse(&element, &children)) {
        throw bson_error("cannot render a BSON document as JSON: malformed nested document");
    }
    return children;
}

std::string hexOf(const bson_oid_t& oid) {
    std::array<char, 25> text{};
    bson_oid_to_string(&oid, text.data());
    return text.data();
}

} // namespace

legacy_json::legacy_json(const bsoncxx::v1::document::view& document) {
    if (!bson_iter_init_from_data(&m_element, document.data(), document.size())) {
        throw bson_error("cannot render a BSON document as JSON: malformed");
    }
}

bool legacy_json::next() {
    return advance(m_element, 0);
}

std::string_view legacy_json::key() const {
    return keyOf(m_element);
}

int legacy_json::toInt() {
    switch (bson_iter_type(&m_element)) {
    case BSON_TYPE_INT32:
        return bson_iter_int32(&m_element);
    case BSON_TYPE_INT64: {
        const std::int64_t number = bson_iter_int64(&m_element);
        const bool fits =
            number >= std::numeric_limits<int>::min() && number <= std::numeric_limits<int>::max();
        return fits ? static_cast<int>(number) : 0;
    }
    case BSON_TYPE_DOUBLE:
        return QJsonValue{finite(bson_iter_double(&m_element))}.toInt();
    default:
        skip();
        return 0;
    }
}

QString legacy_json::toString() {
    switch (bson_iter_type(&m_element)) {
    case BSON_TYPE_UTF8:
    case BSON_TYPE_SYMBOL:
        return decodeUtf8(textOf(m_element));
    default:
        skip();
        return {};
    }
}

QJsonObject legacy_json::toObject() {
    return parsed().object();
}

QJsonValue legacy_json::toValue() {
    switch (bson_iter_type(&m_element)) {
    case BSON_TYPE_DOUBLE:
        return finite(bson_iter_double(&m_element));
    case BSON_TYPE_UTF8:
    case BSON_TYPE_SYMBOL:
        return toString();
    case BSON_TYPE_BOOL:
        return bson_iter_bool(&m_element);
    case BSON_TYPE_NULL:
        return QJsonValue{QJsonValue::Null};
    case BSON_TYPE_INT32:
        return bson_iter_int32(&m_element);
    case BSON_TYPE_INT64:
        return static_cast<qint64>(bson_iter_int64(&m_element));
    default:
        break;
    }
    const QJsonDocument document = parsed();
    return document.isArray() ? QJsonValue{document.array()} : QJsonValue{document.object()};
}

// Qt's parser builds a nested object faster than insertion member by member, and exactly: an object
// rounds an inserted 64-bit integer to a double.
QJsonDocument legacy_json::parsed() {
    static const QJsonDocument empty{QJsonObject{}};
    m_text.clear();
    m_text.reserve(usualTextSize);
    write(m_element, 0);
    if (m_text == "{}" || !renderable()) {
        return empty;
    }
    return QJsonDocument::fromJson(
        QByteArray::fromRawData(m_text.data(), static_cast<int>(m_text.size())));
}

qint64 legacy_json::toDateMsecs() {
    double msecs = 0;
    if (BSON_ITER_HOLDS_DATE_TIME(&m_element)) {
        msecs = static_cast<double>(bson_iter_date_time(&m_element));
    } else {
        msecs = toObject().value(QLatin1String("$date")).toDouble();
    }
    // Beyond the range of 64 bits the conversion would be undefined.
    constexpr double limit = 9223372036854775808.0;
    if (msecs >= limit) {
        return std::numeric_limits<qint64>::max();
    }
    return msecs < -limit ? std::numeric_limits<qint64>::min() : static_cast<qint64>(msecs);
}

QString legacy_json::toOid() {
    if (BSON_ITER_HOLDS_OID(&m_element)) {
        return QString::fromStdString(hexOf(*bson_iter_oid(&m_element)));
    }
    return toObject().value(QLatin1String("$oid")).toString();
}

void legacy_json::skip() {
    check(m_element, 0);
}

double legacy_json::finite(double number) {
    m_renderable = m_renderable && std::isfinite(number);
    return number;
}

void legacy_json::write(const bson_iter_t& element, int depth) {
    switch (bson_iter_type(&element)) {
    case BSON_TYPE_DOUBLE:
        writeNumber(finite(bson_iter_double(&element)));
        return;
    case BSON_TYPE_UTF8:
    case BSON_TYPE_SYMBOL:
        writeString(textOf(element));
        return;
    case BSON_TYPE_DOCUMENT:
        writeMembers(childrenOf(element), depth + 1);
        return;
    case BSON_TYPE_ARRAY:
        writeElements(childrenOf(element), depth + 1);
        return;
    case BSON_TYPE_BINARY:
        writeBinary(element);
        return;
    case BSON_TYPE_UNDEFINED:
        m_text += R"({"$undefined":true})";
        return;
    case BSON_TYPE_OID:
        m_text += R"({"$oid":")" + hexOf(*bson_iter_oid(&element)) + "\"}";
        return;
    case BSON_TYPE_BOOL:
        m_text += bson_iter_bool(&element) ? "true" : "false";
        return;
    case BSON_TYPE_DATE_TIME:
        m_text += R"({"$date":)";
        writeNumber(bson_iter_date_time(&element));
        m_text += '}';
        return;
    case BSON_TYPE_NULL:
        m_text += "null";
        return;
    case BSON_TYPE_REGEX: {
        const char* options = nullptr;
        const char* pattern = bson_iter_regex(&element, &options);
        m_text += R"({"$regex":)";
        m_levelStopped = writeUntilZero(pattern);
        m_text += R"(,"$options":")";
        // libbson writes the options that it knows, in this order.
        std::ranges::copy_if(std::string_view{"ilmsux"}, std::back_inserter(m_text), [&](char c) {
            return std::string_view{options}.find(c) != std::string_view::npos;
        });
        m_text += "\"}";
        return;
    }
    case BSON_TYPE_DBPOINTER: {
        std::uint32_t length = 0;
        const char* collection = nullptr;
        const bson_oid_t* oid = nullptr;
        bson_iter_dbpointer(&element, &length, &collection, &oid);
        m_text += R"({"$ref":)";
        m_levelStopped = writeUntilZero({collection, length});
        m_text += R"(,"$id":")" + hexOf(*oid) + "\"}";
        return;
    }
    case BSON_TYPE_CODE: {
        std::uint32_t length = 0;
        const char* code = bson_iter_code(&element, &length);
        m_text += R"({"$code":)";
        writeString({code, length});
        m_text += '}';
        return;
    }
    case BSON_TYPE_CODEWSCOPE:
        writeCodeWithScope(element);
        return;
    case BSON_TYPE_INT32:
        writeNumber(bson_iter_int32(&element));
        return;
    case BSON_TYPE_INT64:
        writeNumber(bson_iter_int64(&element));
        return;
    case BSON_TYPE_TIMESTAMP: {
        std::uint32_t seconds = 0;
        std::uint32_t increment = 0;
        bson_iter_timestamp(&element, &seconds, &increment);
        m_text += R"({"$timestamp":{"t":)";
        writeNumber(seconds);
        m_text += R"(,"i":)";
        writeNumber(increment);
        m_text += "}}";
        return;
    }
    case BSON_TYPE_DECIMAL128: {
        bson_decimal128_t number;
        bson_iter_decimal128(&element, &number);
        std::array<char, BSON_DECIMAL128_STRING> text{};
        bson_decimal128_to_string(&number, text.data());
        m_text += R"({"$numberDecimal":")" + std::string{text.data()} + "\"}";
        return;
    }
    case BSON_TYPE_MAXKEY:
        m_text += R"({"$maxKey":1})";
        return;
    case BSON_TYPE_MINKEY:
        m_text += R"({"$minKey":1})";
        return;
    case BSON_TYPE_EOD:
        break;
    }
    throw bson_error("cannot render a BSON document as JSON: unknown type");
}

void legacy_json::writeMembers(bson_iter_t members, int depth) {
    m_text += '{';
    for (bool first = true; advance(members, depth); first = false) {
        if (!first) {
            m_text += ',';
        }
        writeString(keyOf(members));
        m_text += ':';
        write(members, depth);
    }
    m_text += '}';
}

void legacy_json::writeElements(bson_iter_t elements, int depth) {
    m_text += '[';
    for (bool first = true; advance(elements, depth); first = false) {
        if (!first) {
            m_text += ',';
        }
        write(elements, depth);
    }
    m_text += ']';
}

void legacy_json::writeBinary(const bson_iter_t& element) {
    bson_subtype_t subtype = BSON_SUBTYPE_BINARY;
    std::uint32_t length = 0;
    const std::uint8_t* data = nullptr;
    bson_iter_binary(&element, &subtype, &length, &data);
    const auto bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(length));
    m_text += R"({"$binary":")" + bytes.toBase64().toStdString() + R"(","$type":")" +
              QByteArray(1, static_cast<char>(subtype)).toHex().toStdString() + "\"}";
}

void legacy_json::writeCodeWithScope(const bson_iter_t& element) {
    std::uint32_t length = 0;
    std::uint32_t scopeLength = 0;
    const std::uint8_t* scope = nullptr;
    const char* code = bson_iter_codewscope(&element, &length, &scopeLength, &scope);
    bson_iter_t members;
    if (!bson_iter_init_from_data(&members, scope, scopeLength)) {
        throw bson_error("cannot render a BSON document as JSON: malformed scope");
    }
    m_text += R"({"$code":)";
    writeString({code, length});
    m_text += R"(,"$scope":)";
    // libbson counts the levels anew in a scope.
    writeMembers(members, 0);
    m_text += '}';
}

void legacy_json::writeNumber(auto number) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    m_text.append(digits.data(), end);
}

void legacy_json::writeString(std::string_view text) {
    if (isPlain(text)) {
        m_text += '"';
        m_text += text;
        m_text += '"';
        return;
    }
    checkUtf8(text);
    m_text += '"';
    while (!text.empty()) {
        const auto plain =
            static_cast<std::size_t>(std::ranges::find_if(text, needsEscape) - text.begin());
        m_text += text.substr(0, plain);
        text.remove_prefix(plain);
        if (text.empty()) {
            break;
        }
        if (text.starts_with("\xC0\x80")) {
            m_text += "\\u0000";
            text.remove_prefix(2);
            continue;
        }
        static constexpr std::string_view hexDigits = "0123456789abcdef";
        const auto code = static_cast<unsigned char>(text.front());
        m_text += "\\u00";
        m_text += hexDigits[code >> 4U];
        m_text += hexDigits[code & 0xFU];
        text.remove_prefix(1);
    }
    m_text += '"';
}

// libbson's text ends at a zero character in these places, so it does not parse; the rest of the
// level, which true stands for, is not looked at then.
bool legacy_json::writeUntilZero(std::string_view text) {
    writeString(text);
    const bool zeroFound = text.find('\0') != std::string_view::npos ||
                           text.find("\xC0\x80") != std::string_view::npos;
    m_renderable = m_renderable && !zeroFound;
    return zeroFound;
}

bool legacy_json::advance(bson_iter_t& element, int depth) {
    if (m_levelStopped) {
        m_levelStopped = false;
        return false;
    }
    if (bson_iter_next(&element)) {
        checkUtf8(keyOf(element), zero::refused);
        m_renderable = m_renderable && depth < maxDepth;
        return depth < maxDepth;
    }
    if (element.err_off != 0) {
        throw bson_error("cannot render a BSON document as JSON: malformed at byte " +
                         std::to_string(element.err_off));
    }
    return false;
}

void legacy_json::check(const bson_iter_t& element, int depth) {
    switch (bson_iter_type(&element)) {
    case BSON_TYPE_DOUBLE:
        finite(bson_iter_double(&element));
        break;
    case BSON_TYPE_UTF8:
    case BSON_TYPE_SYMBOL:
        checkUtf8(textOf(element));
        break;
    case BSON_TYPE_DOCUMENT:
    case BSON_TYPE_ARRAY:
        checkMembers(childrenOf(element), depth + 1);
        break;
    case BSON_TYPE_REGEX:
    case BSON_TYPE_DBPOINTER:
    case BSON_TYPE_CODE:
    case BSON_TYPE_CODEWSCOPE:
        m_text.clear();
        write(element, depth);
        break;
    default:
        break;
    }
}

void legacy_json::checkMembers(bson_iter_t members, int depth) {
    while (advance(members, depth)) {
        check(members, depth);
    }
}

} // namespace bson_utils
