#include "model/bson/similar_objects.h"

#include "model/bson/element_walk.h"
#include "model/bson/json_text.h"
#include "model/json/exact_numbers.h"

#include <bson/bson.h>

#include <QJsonArray>

#include <algorithm>
#include <cmath>
#include <functional>
#include <utility>

namespace bson_utils {

namespace {

/// For fewer objects it is not worth to make the tables.
constexpr std::size_t fewObjects = 8;

constexpr std::size_t mostKnown = 64;
constexpr std::size_t largestKnown = std::size_t{16} * 1024;
constexpr std::size_t mostSizes = 512;
constexpr std::size_t mostSmall = 64;
constexpr std::size_t largestSmall = 64;
/// For the members of longer lists and of deeper documents the parser is as fast.
constexpr std::size_t largestList = 256;
constexpr int deepest = 8;

/// What Qt's parser makes of a value without members; nothing if that is in doubt, as with numbers
/// of which the parser and QJsonValue may make different ones.
std::optional<QJsonValue> scalarOf(const element_walk& element) {
    switch (element.type()) {
    case BSON_TYPE_DOUBLE: {
        const double number = element.real();
        const bool certain = std::abs(number) < static_cast<double>(wholeLimit);
        return certain ? std::optional{QJsonValue{number}} : std::nullopt;
    }
    case BSON_TYPE_INT64: {
        const std::int64_t number = element.int64();
        return isExactAsDouble(number) ? std::optional{QJsonValue{qint64{number}}} : std::nullopt;
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

bool similar_objects::success::pays() const {
    constexpr std::size_t patience = 128;
    return missed < found + patience;
}

std::optional<QJsonObject> similar_objects::object(const bsoncxx::v1::document::view& document) {
    if (m_made < fewObjects) {
        ++m_made;
        return ordinaryObject(document);
    }
    return document.size() <= largestSmall && m_sharing.pays() ? shared(document)
                                                               : similar(document);
}

std::optional<QJsonObject> similar_objects::shared(const bsoncxx::v1::document::view& document) {
    m_small.resize(mostSmall);
    const std::string_view bytes{reinterpret_cast<const char*>(document.data()), document.size()};
    small_document& known = m_small[std::hash<std::string_view>{}(bytes) % mostSmall];
    if (known.bytes == bytes) {
        ++m_sharing.found;
        return known.object;
    }
    ++m_sharing.missed;
    auto object = similar(document);
    if (object) {
        known = {std::string{bytes}, *object};
    }
    return object;
}

std::optional<QJsonObject> similar_objects::similar(const bsoncxx::v1::document::view& document) {
    if (!m_copying.pays() || document.size() > largestKnown) {
        return ordinaryObject(document);
    }
    // Most documents of a size are of one make.
    m_latest.resize(mostSizes, mostKnown);
    std::uint8_t& latest = m_latest[document.size() % mostSizes];
    if (latest < m_known.size() && compare(m_known[latest], document)) {
        return copied(m_known[latest], document);
    }
    const auto found = std::ranges::find_if(
        m_known, [&](const known_document& known) { return compare(known, document); });
    if (found == m_known.end()) {
        return remembered(document, latest);
    }
    // To replace a text takes longer than a number, and more memory: the old one stays in the copy.
    if (m_known.size() < mostKnown && textsDiffer()) {
        return remembered(document, latest);
    }
    latest = static_cast<std::uint8_t>(found - m_known.begin());
    return copied(*found, document);
}

/// Whether there are the same keys in the same order, and other values can replace the known ones.
bool similar_objects::compare(const known_document& known,
                              const bsoncxx::v1::document::view& document) {
    m_replacements.erase(m_replacements.begin() + static_cast<std::ptrdiff_t>(m_first),
                         m_replacements.end());
    element_walk element{document};
    int place = 0;
    for (const member& member : known.members) {
        if (!element.next(member.key)) {
            return false;
        }
        if (element.type() != member.type || element.bytes() != member.value) {
            if (!isReplaceable(element)) {
                return false;
            }
            m_replacements.push_back({place, element});
        }
        ++place;
    }
    return element.atEnd();
}

bool similar_objects::isReplaceable(const element_walk& element) const {
    switch (element.type()) {
    case BSON_TYPE_DOCUMENT:
        return m_depth < deepest;
    case BSON_TYPE_ARRAY:
        return m_depth < deepest && element.bytes().size() <= largestList;
    default:
        return true;
    }
}

bool similar_objects::textsDiffer() const {
    return std::any_of(m_replacements.begin() + static_cast<std::ptrdiff_t>(m_first),
                       m_replacements.end(), [](const replacement& replacement) {
                           return replacement.element.type() == BSON_TYPE_UTF8;
                       });
}

std::optional<QJsonObject> similar_objects::copied(const known_document& known,
                                                   const bsoncxx::v1::document::view& document) {
    ++m_copying.found;
    QJsonObject object = known.object;
    const std::size_t first = m_first;
    const std::size_t last = m_replacements.size();
    if (first == last) {
        return object;
    }
    const auto members = object.begin();
    bool certain = true;
    m_first = last;
    ++m_depth;
    for (std::size_t i = first; certain && i < last; ++i) {
        const replacement replacement = m_replacements[i];
        const auto value = valueOf(replacement.element);
        certain = value.has_value();
        if (certain) {
            (members + replacement.place).value() = *value;
        }
    }
    --m_depth;
    m_first = first;
    return certain ? std::optional{object} : ordinaryObject(document);
}

std::optional<QJsonValue> similar_objects::valueOf(const element_walk& element) {
    if (element.type() == BSON_TYPE_ARRAY) {
        return listOf(element.document());
    }
    if (element.type() != BSON_TYPE_DOCUMENT) {
        return scalarOf(element);
    }
    auto nested = object(element.document());
    return nested ? std::optional{QJsonValue{*std::move(nested)}} : std::nullopt;
}

std::optional<QJsonValue> similar_objects::listOf(const bsoncxx::v1::document::view& array) {
    QJsonArray list;
    element_walk element{array};
    while (!element.atEnd()) {
        const auto value =
            element.next(std::to_string(list.size())) ? valueOf(element) : std::nullopt;
        if (!value) {
            return std::nullopt;
        }
        list.append(*value);
    }
    return list;
}

std::optional<QJsonObject> similar_objects::remembered(const bsoncxx::v1::document::view& document,
                                                       std::uint8_t& place) {
    ++m_copying.missed;
    auto object = ordinaryObject(document);
    if (!object) {
        return std::nullopt;
    }
    known_document known{{document.data(), document.data() + document.size()}, *object, {}};
    if (readMembers(known)) {
        const bool full = m_known.size() == mostKnown;
        const std::size_t index = full ? m_copying.missed % mostKnown : m_known.size();
        m_known.reserve(mostKnown);
        m_known.resize(std::max(m_known.size(), index + 1));
        m_known[index] = std::move(known);
        place = static_cast<std::uint8_t>(index);
    }
    return object;
}

/// False if they do not stand in the order of their keys, in which Qt keeps those of an object.
bool similar_objects::readMembers(known_document& known) {
    const bsoncxx::v1::document::view bytes{known.bytes.data(), known.bytes.size()};
    bson_iter_t elements;
    bson_iter_init_from_data(&elements, bytes.data(), bytes.size());
    element_walk element{bytes};
    known.members.reserve(static_cast<std::size_t>(known.object.size()));
    while (bson_iter_next(&elements)) {
        const std::string_view key{bson_iter_key(&elements), bson_iter_key_len(&elements)};
        if (!element.next(key) || (!known.members.empty() && key <= known.members.back().key)) {
            return false;
        }
        known.members.push_back({key, element.bytes(), element.type()});
    }
    return true;
}

} // namespace bson_utils
