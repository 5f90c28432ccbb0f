#include "model/bson/similar_objects.h"

#include "model/bson/json_text.h"

#include <bson/bson.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <functional>
#include <utility>

namespace bson_utils {

namespace {

/// So many documents are not worth a table.
constexpr std::size_t few = 8;
constexpr std::size_t mostKnown = 64;
constexpr std::size_t mostSmall = 64;
constexpr std::size_t largestSmall = 64;
constexpr std::size_t mostSizes = 512;
constexpr std::size_t largestKnown = std::size_t{16} * 1024;
/// More misses than that, beyond the hits, and a query's documents are not alike.
constexpr std::size_t patience = 128;

/// From here on a replaced whole number may differ from a parsed one.
constexpr std::int64_t wholeLimit = std::int64_t{1} << 53;

template <typename Number>
Number loaded(const void* bytes) {
    Number number; // BSON is little-endian, as are the machines that libbson is built for here
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

bool same(const std::uint8_t* one, const std::uint8_t* other, std::size_t size) {
    return std::memcmp(one, other, size) == 0;
}

/// The bytes that a value without members takes, or nothing if it is none or not within `room`.
std::optional<std::size_t> sizeOfScalar(std::uint8_t type, const std::uint8_t* value,
                                        std::size_t room) {
    std::size_t size = 0;
    switch (type) {
    case BSON_TYPE_DOUBLE:
    case BSON_TYPE_INT64:
        size = 8;
        break;
    case BSON_TYPE_INT32:
        size = 4;
        break;
    case BSON_TYPE_BOOL:
        size = 1;
        break;
    case BSON_TYPE_NULL:
        break;
    case BSON_TYPE_UTF8: {
        constexpr std::size_t prefix = 4;
        const auto length = room < prefix ? 0 : loaded<std::uint32_t>(value);
        if (length == 0 || length > room - prefix || value[prefix + length - 1] != 0) {
            return std::nullopt;
        }
        return prefix + length;
    }
    default:
        return std::nullopt;
    }
    return size <= room ? std::optional{size} : std::nullopt;
}

/// A value of JSON as Qt's parser makes it; nothing if that is in doubt.
std::optional<QJsonValue> valueOf(std::uint8_t type, std::string_view bytes) {
    switch (type) {
    case BSON_TYPE_DOUBLE: {
        const auto number = loaded<double>(bytes.data());
        const bool ordinary = std::abs(number) < static_cast<double>(wholeLimit) &&
                              !(number == 0 && std::signbit(number));
        return ordinary ? std::optional{QJsonValue{number}} : std::nullopt;
    }
    case BSON_TYPE_INT64: {
        const auto number = loaded<std::int64_t>(bytes.data());
        const bool ordinary = -wholeLimit < number && number < wholeLimit;
        return ordinary ? std::optional{QJsonValue{qint64{number}}} : std::nullopt;
    }
    case BSON_TYPE_INT32:
        return QJsonValue{loaded<std::int32_t>(bytes.data())};
    case BSON_TYPE_BOOL:
        // libbson takes any other byte for damage.
        return bytes[0] == 0 || bytes[0] == 1 ? std::optional{QJsonValue{bytes[0] == 1}}
                                              : std::nullopt;
    case BSON_TYPE_UTF8: {
        const auto text = bytes.substr(4, bytes.size() - 5);
        return isAscii(text) ? std::optional{QJsonValue{QLatin1String{
                                   text.data(), static_cast<int>(text.size())}}}
                             : std::nullopt;
    }
    default:
        return QJsonValue{};
    }
}

} // namespace

std::optional<QJsonObject> similar_objects::object(const bsoncxx::v1::document::view& document) {
    if (m_made < few) {
        ++m_made;
        return ordinaryObject(document);
    }
    return document.size() <= largestSmall && m_smallMissed < m_smallShared + patience
               ? shared(document)
               : similar(document);
}

std::optional<QJsonObject> similar_objects::shared(const bsoncxx::v1::document::view& document) {
    if (m_small.empty()) {
        m_small.resize(mostSmall);
    }
    const std::string_view bytes{reinterpret_cast<const char*>(document.data()), document.size()};
    small_document& known = m_small[std::hash<std::string_view>{}(bytes) % mostSmall];
    if (known.bytes == bytes) {
        ++m_smallShared;
        return known.object;
    }
    ++m_smallMissed;
    auto object = similar(document);
    if (object) {
        known = {std::string{bytes}, *object};
    }
    return object;
}

std::optional<QJsonObject> similar_objects::similar(const bsoncxx::v1::document::view& document) {
    if (m_missed >= m_similar + patience || document.size() > largestKnown) {
        return ordinaryObject(document);
    }
    m_latest.resize(mostSizes);
    std::uint8_t& latest = m_latest[document.size() % mostSizes];
    if (latest < m_known.size() && compare(m_known[latest], document)) {
        ++m_similar;
        return copied(m_known[latest], document);
    }
    const auto found = std::ranges::find_if(
        m_known, [&](const known_document& known) { return compare(known, document); });
    latest = static_cast<std::uint8_t>(found - m_known.begin());
    if (found != m_known.end() && (m_known.size() == mostKnown || !textsDiffer())) {
        ++m_similar;
        return copied(*found, document);
    }
    ++m_missed;
    auto object = ordinaryObject(document);
    if (object) {
        latest = remember(document, *object);
    }
    return object;
}

bool similar_objects::textsDiffer() const {
    return std::ranges::find(m_differences, BSON_TYPE_UTF8, &difference::type) !=
           m_differences.end();
}

bool similar_objects::compare(const known_document& known,
                              const bsoncxx::v1::document::view& document) {
    m_differences.clear();
    const std::uint8_t* const end = document.data() + document.size() - 1;
    const std::uint8_t* at = document.data() + 4;
    for (const member& member : known.members) {
        const std::uint8_t* const knownElement = known.bytes.data() + member.element;
        auto room = static_cast<std::size_t>(end - at);
        if (room < 1 + member.keySize || !same(at + 1, knownElement + 1, member.keySize)) {
            return false;
        }
        const std::uint8_t* const value = at + 1 + member.keySize;
        room -= 1 + member.keySize;
        if (*at == *knownElement && member.valueSize <= room &&
            same(value, knownElement + 1 + member.keySize, member.valueSize)) {
            at = value + member.valueSize;
            continue;
        }
        const auto size = sizeOfScalar(*at, value, room);
        if (!size) {
            return false;
        }
        m_differences.push_back(
            {member.place, *at, {reinterpret_cast<const char*>(value), *size}});
        at = value + *size;
    }
    return at == end && *end == 0 && loaded<std::uint32_t>(document.data()) == document.size();
}

std::optional<QJsonObject> similar_objects::copied(const known_document& known,
                                                   const bsoncxx::v1::document::view& document) const {
    QJsonObject object = known.object;
    if (m_differences.empty()) {
        return object;
    }
    const auto members = object.begin();
    for (const difference& difference : m_differences) {
        auto value = valueOf(difference.type, difference.value);
        if (!value) {
            return ordinaryObject(document);
        }
        (members + difference.place).value() = *value;
    }
    return object;
}

std::uint8_t similar_objects::remember(const bsoncxx::v1::document::view& document,
                                       const QJsonObject& object) {
    known_document known{{document.data(), document.data() + document.size()}, object, {}};
    bson_iter_t iterator;
    bson_iter_init_from_data(&iterator, known.bytes.data(), known.bytes.size());
    while (bson_iter_next(&iterator)) {
        const std::string_view key{bson_iter_key(&iterator), bson_iter_key_len(&iterator)};
        const auto place = object.constFind(QLatin1String{key.data(), static_cast<int>(key.size())});
        known.members.push_back({.element = bson_iter_offset(&iterator),
                                 .keySize = key.size() + 1,
                                 .valueSize = 0,
                                 .place = static_cast<int>(place - object.constBegin())});
    }
    std::size_t end = known.bytes.size() - 1;
    for (auto element = known.members.rbegin(); element != known.members.rend(); ++element) {
        element->valueSize = end - (element->element + 1 + element->keySize);
        end = element->element;
    }
    // Of a repeated key the last value counts, whichever of them differs.
    if (std::cmp_not_equal(known.members.size(), object.size())) {
        return mostKnown;
    }
    const std::size_t place = m_known.size() < mostKnown ? m_known.size() : m_missed % mostKnown;
    m_known.resize(std::max(m_known.size(), place + 1));
    m_known[place] = std::move(known);
    return static_cast<std::uint8_t>(place);
}

} // namespace bson_utils
