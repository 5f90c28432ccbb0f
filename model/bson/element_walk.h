#pragma once

#include <bson/bson.h>
#include <bsoncxx/v1/document/view.hpp>

#include <QtEndian>

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string_view>

namespace bson_utils {

/// Goes through a document of which the keys are known. Takes a fraction of the time of libbson's
/// iterator, which finds out about each element by itself.
///
/// The bytes are those of https://bsonspec.org/spec.html. Borrows the document, and reads nothing
/// outside it however damaged it is inside.
class element_walk {
public:
    explicit element_walk(const bsoncxx::v1::document::view& document)
        : m_next(document.data() + prefix), m_end(m_next + (document.size() - prefix - 1)) {}

    /// Goes to the next element. False if that has another key or is no undamaged double, text,
    /// document, array, ObjectId, boolean, date, null, int32 or int64; the walk is over then.
    bool next(std::string_view key) {
        const auto room = static_cast<std::size_t>(m_end - m_next);
        const std::size_t head = 1 + key.size() + 1;
        if (room < head || std::memcmp(m_next + 1, key.data(), key.size()) != 0 ||
            m_next[head - 1] != 0) {
            return stop();
        }
        m_type = *m_next;
        m_value = m_next + head;
        m_size = sizeOf(m_type, m_value, room - head);
        if (m_size > room - head) {
            return stop();
        }
        m_next = m_value + m_size;
        return true;
    }

    /// Whether nothing is left, and nothing was damaged.
    bool atEnd() const { return m_whole && m_next == m_end; }

    // The current element, and its value, each for its own type.
    std::uint8_t type() const { return m_type; }
    std::string_view bytes() const { return {reinterpret_cast<const char*>(m_value), m_size}; }
    double real() const { return std::bit_cast<double>(number<std::uint64_t>(m_value)); }
    bool boolean() const { return *m_value != 0; }
    std::int32_t int32() const { return number<std::int32_t>(m_value); }
    /// Of a date its milliseconds.
    std::int64_t int64() const { return number<std::int64_t>(m_value); }
    std::string_view utf8() const { return bytes().substr(prefix, m_size - prefix - 1); }
    bsoncxx::v1::document::view document() const { return {m_value, m_size}; }

private:
    static constexpr std::size_t prefix = 4;

    template <typename Number>
    static Number number(const std::uint8_t* bytes) {
        return qFromLittleEndian<Number>(bytes);
    }

    /// More than any room if the value is damaged or of another type.
    static std::size_t sizeOf(std::uint8_t type, const std::uint8_t* value, std::size_t room) {
        constexpr auto none = std::numeric_limits<std::size_t>::max();
        switch (type) {
        case BSON_TYPE_DOUBLE:
        case BSON_TYPE_DATE_TIME:
        case BSON_TYPE_INT64:
            return 8;
        case BSON_TYPE_INT32:
            return 4;
        case BSON_TYPE_NULL:
            return 0;
        case BSON_TYPE_BOOL:
            return room > 0 && *value > 1 ? none : 1;
        case BSON_TYPE_OID:
            return 12;
        case BSON_TYPE_UTF8: {
            const std::size_t length = room < prefix ? 0 : number<std::uint32_t>(value);
            const bool whole =
                length > 0 && length <= room - prefix && value[prefix + length - 1] == 0;
            return whole ? prefix + length : none;
        }
        case BSON_TYPE_DOCUMENT:
        case BSON_TYPE_ARRAY: {
            constexpr std::size_t empty = prefix + 1;
            const std::size_t length = room < prefix ? 0 : number<std::uint32_t>(value);
            const bool whole = empty <= length && length <= room && value[length - 1] == 0;
            return whole ? length : none;
        }
        default:
            return none;
        }
    }

    bool stop() {
        m_end = m_next;
        m_whole = false;
        return false;
    }

    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
    const std::uint8_t* m_value = nullptr;
    std::size_t m_size = 0;
    std::uint8_t m_type = 0;
    bool m_whole = true;
};

} // namespace bson_utils
