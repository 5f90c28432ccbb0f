#include "model/bson/similar_objects.h"

#include "model/bson/element_walk.h"
#include "model/bson/json_text.h"

#include <bson/bson.h>

#include <algorithm>
#include <cmath>
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

/// What Qt's parser makes of a value in JSON; nothing if that is in doubt.
std::optional<QJsonValue> valueOf(const element_walk& element) {
    switch (element.type()) {
    case BSON_TYPE_DOUBLE: {
        const double number = element.real();
        const bool ordinary = std::abs(number) < static_cast<double>(wholeLimit) &&
                              !(number == 0 && std::signbit(number));
        return ordinary ? std::optional{QJsonValue{number}} : std::nullopt;
    }
    case BSON_TYPE_INT64: {
        const std::int64_t number = element.int64();
        const bool ordinary = -wholeLimit < number && number < wholeLimit;
        return ordinary ? std::optional{QJsonValue{qint64{number}}} : std::nullopt;
    }
    case BSON_TYPE_INT32:
        return QJsonValue{element.int32()};
    case BSON_TYPE_BOOL:
        return QJsonValue{element.boolean()};
    case BSON_TYPE_NULL:
        return QJsonValue{};
    case BSON_TYPE_UTF8: {
        const std::string_view text = element.utf8();
        const QLatin1String ascii{text.data(), static_cast<int>(text.size())};
        return isAscii(text) ? std::optional{QJsonValue{ascii}} : std::nullopt;
    }
    default:
        return std::nullopt;
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
    m_latest.resize(mostSizes, mostKnown);
    std::uint8_t& latest = m_latest[document.size() % mostSizes];
    if (latest < m_known.size() && compare(m_known[latest], document)) {
        ++m_similar;
        return copied(m_known[latest]);
    }
    const auto found = std::ranges::find_if(
        m_known, [&](const known_document& known) { return compare(known, document); });
    latest = static_cast<std::uint8_t>(found - m_known.begin());
    if (found != m_known.end() && (m_known.size() == mostKnown || !textsDiffer())) {
        ++m_similar;
        return copied(*found);
    }
    ++m_missed;
    auto object = ordinaryObject(document);
    if (object) {
        latest = remember(document, *object);
    }
    return object;
}

bool similar_objects::textsDiffer() const {
    return std::ranges::any_of(
        m_differences, [](const difference& difference) { return difference.value.isString(); });
}

bool similar_objects::compare(const known_document& known,
                              const bsoncxx::v1::document::view& document) {
    m_differences.clear();
    element_walk element{document};
    for (const member& member : known.members) {
        if (!element.next(member.key)) {
            return false;
        }
        if (element.type() != member.type || element.bytes() != member.value) {
            auto value = valueOf(element);
            if (!value) {
                return false;
            }
            m_differences.push_back({member.place, *std::move(value)});
        }
    }
    return element.atEnd();
}

QJsonObject similar_objects::copied(const known_document& known) const {
    QJsonObject object = known.object;
    if (!m_differences.empty()) {
        const auto members = object.begin();
        for (const difference& difference : m_differences) {
            (members + difference.place).value() = difference.value;
        }
    }
    return object;
}

std::uint8_t similar_objects::remember(const bsoncxx::v1::document::view& document,
                                       const QJsonObject& object) {
    known_document known{{document.data(), document.data() + document.size()}, object, {}};
    bson_iter_t elements;
    bson_iter_init_from_data(&elements, known.bytes.data(), known.bytes.size());
    element_walk element{{known.bytes.data(), known.bytes.size()}};
    while (bson_iter_next(&elements)) {
        const std::string_view key{bson_iter_key(&elements), bson_iter_key_len(&elements)};
        const auto place =
            object.constFind(QLatin1String{key.data(), static_cast<int>(key.size())});
        element.next(key);
        known.members.push_back({key, element.bytes(), element.type(),
                                 static_cast<int>(place - object.constBegin())});
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
