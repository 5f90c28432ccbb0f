#include "model/legacy_json.h"

#include "model/bson_error.h"

#include <QJsonArray>
#include <QLatin1String>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

namespace bson_utils {

namespace {

/// Levels of nesting below the document that libbson still renders (BSON_MAX_RECURSION).
constexpr int maxDepth = 200;

bool isAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<signed char>(c) >= 0; });
}

QLatin1String latin1(std::string_view ascii) {
    return QLatin1String{ascii.data(), static_cast<int>(ascii.size())};
}

void checkUtf8(std::string_view text) {
    if (!isAscii(text) && !bson_utf8_validate(text.data(), text.size(), true)) {
        throw bson_error("cannot render a BSON document as JSON: invalid UTF-8");
    }
}

// As Qt's JSON parser decodes a string: unlike QString::fromUtf8 it keeps a leading byte order
// mark, and libbson's text shows it the two-byte form of the zero character as \u0000.
QString decodeUtf8(std::string_view text) {
    if (isAscii(text)) {
        return QString{latin1(text)};
    }
    checkUtf8(text);
    std::string bytes{text};
    for (auto at = bytes.find("\xC0\x80"); at != std::string::npos;
         at = bytes.find("\xC0\x80", at)) {
        bytes.replace(at, 2, 1, '\0');
    }
    std::string_view rest = bytes;
    QString decoded;
    while (rest.starts_with("\xEF\xBB\xBF")) {
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

bool advance(bson_iter_t& element) {
    if (bson_iter_next(&element)) {
        return true;
    }
    if (element.err_off != 0) {
        throw bson_error("cannot render a BSON document as JSON: malformed at byte " +
                         std::to_string(element.err_off));
    }
    return false;
}

QString hexOf(const bson_oid_t& oid) {
    char text[25];
    bson_oid_to_string(&oid, text);
    return QString{QLatin1String{text, 24}};
}

QJsonObject binaryObject(const bson_iter_t& element) {
    bson_subtype_t subtype;
    std::uint32_t length = 0;
    const std::uint8_t* data = nullptr;
    bson_iter_binary(&element, &subtype, &length, &data);
    const auto bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<int>(length));
    return {{QStringLiteral("$binary"), QString::fromLatin1(bytes.toBase64())},
            {QStringLiteral("$type"),
             QStringLiteral("%1").arg(static_cast<int>(subtype), 2, 16, QLatin1Char('0'))}};
}

} // namespace

legacy_json::legacy_json(const bsoncxx::v1::document::view& document) {
    if (!bson_iter_init_from_data(&m_element, document.data(), document.size())) {
        throw bson_error("cannot render a BSON document as JSON: malformed");
    }
}

bool legacy_json::next() {
    if (!advance(m_element)) {
        return false;
    }
    checkUtf8(key());
    return true;
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
    return valueOf(m_element, 0).toObject();
}

QJsonValue legacy_json::toValue() {
    return valueOf(m_element, 0);
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
        return hexOf(*bson_iter_oid(&m_element));
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

bool legacy_json::descend(int depth) {
    m_renderable = m_renderable && depth < maxDepth;
    return depth < maxDepth;
}

QJsonValue legacy_json::valueOf(const bson_iter_t& element, int depth) {
    switch (bson_iter_type(&element)) {
    case BSON_TYPE_DOUBLE:
        return finite(bson_iter_double(&element));
    case BSON_TYPE_UTF8:
    case BSON_TYPE_SYMBOL:
        return decodeUtf8(textOf(element));
    case BSON_TYPE_DOCUMENT:
        return descend(depth) ? QJsonValue{objectOf(childrenOf(element), depth + 1)} : QJsonValue{};
    case BSON_TYPE_ARRAY:
        return descend(depth) ? QJsonValue{arrayOf(childrenOf(element), depth + 1)} : QJsonValue{};
    case BSON_TYPE_BINARY:
        return binaryObject(element);
    case BSON_TYPE_UNDEFINED:
        return QJsonObject{{QStringLiteral("$undefined"), true}};
    case BSON_TYPE_OID:
        return QJsonObject{{QStringLiteral("$oid"), hexOf(*bson_iter_oid(&element))}};
    case BSON_TYPE_BOOL:
        return bson_iter_bool(&element);
    case BSON_TYPE_DATE_TIME:
        return QJsonObject{
            {QStringLiteral("$date"), static_cast<qint64>(bson_iter_date_time(&element))}};
    case BSON_TYPE_NULL:
        return QJsonValue{QJsonValue::Null};
    case BSON_TYPE_REGEX: {
        const char* options = nullptr;
        const char* pattern = bson_iter_regex(&element, &options);
        return QJsonObject{{QStringLiteral("$regex"), decodeUtf8(pattern)},
                           {QStringLiteral("$options"), decodeUtf8(options)}};
    }
    case BSON_TYPE_DBPOINTER: {
        std::uint32_t length = 0;
        const char* collection = nullptr;
        const bson_oid_t* oid = nullptr;
        bson_iter_dbpointer(&element, &length, &collection, &oid);
        return QJsonObject{{QStringLiteral("$ref"), decodeUtf8({collection, length})},
                           {QStringLiteral("$id"), hexOf(*oid)}};
    }
    case BSON_TYPE_CODE: {
        std::uint32_t length = 0;
        const char* code = bson_iter_code(&element, &length);
        return QJsonObject{{QStringLiteral("$code"), decodeUtf8({code, length})}};
    }
    case BSON_TYPE_CODEWSCOPE: {
        std::uint32_t length = 0;
        std::uint32_t scopeLength = 0;
        const std::uint8_t* scope = nullptr;
        const char* code = bson_iter_codewscope(&element, &length, &scopeLength, &scope);
        bson_iter_t members;
        if (!bson_iter_init_from_data(&members, scope, scopeLength)) {
            throw bson_error("cannot render a BSON document as JSON: malformed scope");
        }
        return QJsonObject{{QStringLiteral("$code"), decodeUtf8({code, length})},
                           {QStringLiteral("$scope"), objectOf(members, 0)}};
    }
    case BSON_TYPE_INT32:
        return bson_iter_int32(&element);
    case BSON_TYPE_INT64:
        return static_cast<qint64>(bson_iter_int64(&element));
    case BSON_TYPE_TIMESTAMP: {
        std::uint32_t seconds = 0;
        std::uint32_t increment = 0;
        bson_iter_timestamp(&element, &seconds, &increment);
        return QJsonObject{{QStringLiteral("$timestamp"),
                            QJsonObject{{QStringLiteral("t"), static_cast<qint64>(seconds)},
                                        {QStringLiteral("i"), static_cast<qint64>(increment)}}}};
    }
    case BSON_TYPE_DECIMAL128: {
        bson_decimal128_t number;
        bson_iter_decimal128(&element, &number);
        char text[BSON_DECIMAL128_STRING];
        bson_decimal128_to_string(&number, text);
        return QJsonObject{{QStringLiteral("$numberDecimal"), QString::fromLatin1(text)}};
    }
    case BSON_TYPE_MAXKEY:
        return QJsonObject{{QStringLiteral("$maxKey"), 1}};
    case BSON_TYPE_MINKEY:
        return QJsonObject{{QStringLiteral("$minKey"), 1}};
    case BSON_TYPE_EOD:
        break;
    }
    throw bson_error("cannot render a BSON document as JSON: unknown type");
}

QJsonObject legacy_json::objectOf(bson_iter_t members, int depth) {
    QJsonObject object;
    while (advance(members)) {
        const std::string_view key = keyOf(members);
        // An ASCII key, the usual one, needs no conversion on its way into the object.
        if (isAscii(key)) {
            object.insert(latin1(key), valueOf(members, depth));
        } else {
            object.insert(decodeUtf8(key), valueOf(members, depth));
        }
    }
    return object;
}

QJsonArray legacy_json::arrayOf(bson_iter_t elements, int depth) {
    QJsonArray array;
    while (advance(elements)) {
        checkUtf8(keyOf(elements));
        array.append(valueOf(elements, depth));
    }
    return array;
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
        if (descend(depth)) {
            checkMembers(childrenOf(element), depth + 1);
        }
        break;
    case BSON_TYPE_REGEX:
    case BSON_TYPE_DBPOINTER:
    case BSON_TYPE_CODE:
    case BSON_TYPE_CODEWSCOPE:
        valueOf(element, depth);
        break;
    default:
        break;
    }
}

void legacy_json::checkMembers(bson_iter_t members, int depth) {
    while (advance(members)) {
        checkUtf8(keyOf(members));
        check(members, depth);
    }
}

} // namespace bson_utils
