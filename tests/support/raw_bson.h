#pragma once

#include <bsoncxx/v1/array/value.hpp>
#include <bsoncxx/v1/array/view.hpp>
#include <bsoncxx/v1/document/value.hpp>
#include <bsoncxx/v1/document/view.hpp>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>

/// BSON written by hand, byte by byte after the format's own grammar, so that what a test expects
/// owes nothing to the library under the product:
///
///     document = int32 length, elements, 0x00       element = type, key, 0x00, value
///
/// A test puts elements together and compares whole documents:
///
///     EXPECT_EQ(rawBson(toBson(json)), doc(number("a", 1.0), string("b", "x")));
namespace test_support::raw_bson {

/// One whole document (or array, which has the same form), or what claims to be one.
struct document_bytes {
    std::string bytes;

    bsoncxx::v1::document::view view() const {
        return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
    }
    bsoncxx::v1::array::view arrayView() const {
        return {reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()};
    }

    friend bool operator==(const document_bytes&, const document_bytes&) = default;
};

/// One element: type, key and value.
using element_bytes = std::string;

namespace detail {

template <typename Number>
std::string littleEndian(Number value) {
    std::array<char, sizeof(Number)> bytes{};
    std::memcpy(bytes.data(), &value, sizeof(Number));
    if constexpr (std::endian::native == std::endian::big) {
        std::ranges::reverse(bytes);
    }
    return {bytes.data(), bytes.size()};
}

/// Length with the closing zero, the text, the zero.
inline std::string lengthAndText(std::string_view text) {
    return littleEndian(static_cast<std::int32_t>(text.size() + 1)) + std::string{text} + '\0';
}

inline element_bytes element(unsigned char type, std::string_view key, std::string_view value) {
    if (key.find('\0') != std::string_view::npos) {
        throw std::invalid_argument("a BSON key cannot hold a zero character");
    }
    return static_cast<char>(type) + std::string{key} + '\0' + std::string{value};
}

} // namespace detail

template <typename... Elements>
document_bytes doc(const Elements&... elements) {
    const std::string content = (std::string{} + ... + elements);
    return {detail::littleEndian(static_cast<std::int32_t>(content.size() + 5)) + content + '\0'};
}

// clang-format off
inline element_bytes number(std::string_view key, double value) {
    return detail::element(0x01, key, detail::littleEndian(value));
}
inline element_bytes string(std::string_view key, std::string_view utf8) {
    return detail::element(0x02, key, detail::lengthAndText(utf8));
}
inline element_bytes embedded(std::string_view key, const document_bytes& value) {
    return detail::element(0x03, key, value.bytes);
}
/// The elements of `value` carry the keys "0", "1", ….
inline element_bytes array(std::string_view key, const document_bytes& value) {
    return detail::element(0x04, key, value.bytes);
}
inline element_bytes binary(std::string_view key, std::string_view bytes, char subtype = 0) {
    return detail::element(0x05, key,
        detail::littleEndian(static_cast<std::int32_t>(bytes.size())) + subtype + std::string{bytes});
}
inline element_bytes undefined(std::string_view key) { return detail::element(0x06, key, {}); }
/// `bytes`: twelve of them.
inline element_bytes oid(std::string_view key, std::string_view bytes) {
    if (bytes.size() != 12) {
        throw std::invalid_argument("an ObjectId has twelve bytes");
    }
    return detail::element(0x07, key, bytes);
}
inline element_bytes boolean(std::string_view key, bool value) {
    return detail::element(0x08, key, std::string(1, value ? '\1' : '\0'));
}
inline element_bytes date(std::string_view key, std::int64_t utcMsecs) {
    return detail::element(0x09, key, detail::littleEndian(utcMsecs));
}
inline element_bytes null(std::string_view key) { return detail::element(0x0A, key, {}); }
inline element_bytes regex(std::string_view key, std::string_view pattern, std::string_view options) {
    return detail::element(0x0B, key, std::string{pattern} + '\0' + std::string{options} + '\0');
}
inline element_bytes dbPointer(std::string_view key, std::string_view name, std::string_view oid) {
    return detail::element(0x0C, key, detail::lengthAndText(name) + std::string{oid});
}
inline element_bytes code(std::string_view key, std::string_view script) {
    return detail::element(0x0D, key, detail::lengthAndText(script));
}
inline element_bytes symbol(std::string_view key, std::string_view text) {
    return detail::element(0x0E, key, detail::lengthAndText(text));
}
inline element_bytes codeWithScope(std::string_view key, std::string_view script,
                                   const document_bytes& scope) {
    const std::string content = detail::lengthAndText(script) + scope.bytes;
    return detail::element(0x0F, key,
        detail::littleEndian(static_cast<std::int32_t>(content.size() + 4)) + content);
}
inline element_bytes int32(std::string_view key, std::int32_t value) {
    return detail::element(0x10, key, detail::littleEndian(value));
}
inline element_bytes timestamp(std::string_view key, std::uint64_t value) {
    return detail::element(0x11, key, detail::littleEndian(value));
}
inline element_bytes int64(std::string_view key, std::int64_t value) {
    return detail::element(0x12, key, detail::littleEndian(value));
}
inline element_bytes decimal128(std::string_view key, std::uint64_t low, std::uint64_t high) {
    return detail::element(0x13, key, detail::littleEndian(low) + detail::littleEndian(high));
}
inline element_bytes minKey(std::string_view key) { return detail::element(0xFF, key, {}); }
inline element_bytes maxKey(std::string_view key) { return detail::element(0x7F, key, {}); }
// clang-format on

inline document_bytes rawBson(const bsoncxx::v1::document::view& document) {
    return {std::string{reinterpret_cast<const char*>(document.data()), document.size()}};
}
inline document_bytes rawBson(const bsoncxx::v1::document::value& document) {
    return rawBson(document.view());
}
inline document_bytes rawBson(const bsoncxx::v1::array::value& array) {
    return {std::string{reinterpret_cast<const char*>(array.view().data()), array.view().size()}};
}

namespace detail {

/// Lists the elements of a document for a person, a reader as independent as the writers above.
class printer {
public:
    printer(std::string_view bytes, std::ostream& out) : m_rest(bytes), m_out(out) {}

    void printDocument() {
        m_out << '{';
        take(4);
        for (const char* comma = ""; !m_rest.empty() && m_rest.front() != 0; comma = ", ") {
            m_out << comma;
            printElement();
        }
        take(1);
        m_out << '}';
    }

    /// What the document's length does not account for.
    void printRest() {
        if (!m_rest.empty()) {
            m_out << " then " << hex(m_rest);
        }
    }

    static std::string hex(std::string_view bytes) {
        std::string digits;
        for (const char byte : bytes) {
            std::array<char, 4> pair{};
            std::snprintf(pair.data(), pair.size(), "%02x ", static_cast<unsigned char>(byte));
            digits += pair.data();
        }
        return digits;
    }

private:
    std::string_view take(std::size_t count) {
        const std::string_view taken = m_rest.substr(0, count);
        m_rest.remove_prefix(taken.size());
        return taken;
    }

    std::string_view takeCString() {
        const std::string_view taken = m_rest.substr(0, m_rest.find('\0'));
        take(taken.size() + 1);
        return taken;
    }

    template <typename Number>
    Number takeNumber() {
        Number value{};
        const std::string_view bytes = take(sizeof(Number));
        std::memcpy(&value, bytes.data(), bytes.size());
        return value;
    }

    void printText(std::string_view text) {
        m_out << '"';
        for (const char character : text) {
            if (static_cast<unsigned char>(character) < 0x20) {
                m_out << "\\x" << hex(std::string_view{&character, 1}).substr(0, 2);
            } else {
                m_out << character;
            }
        }
        m_out << '"';
    }

    void printElement() {
        const auto type = static_cast<unsigned char>(take(1).front());
        printText(takeCString());
        m_out << ": ";
        switch (type) {
        case 0x01: {
            std::array<char, 32> digits{};
            std::snprintf(digits.data(), digits.size(), "%.17g", takeNumber<double>());
            m_out << "double " << digits.data();
            break;
        }
        case 0x02: {
            const auto length = takeNumber<std::uint32_t>();
            m_out << "string ";
            printText(take(length).substr(0, length - 1));
            break;
        }
        case 0x03:
            printDocument();
            break;
        case 0x04:
            m_out << "array ";
            printDocument();
            break;
        case 0x07:
            m_out << "ObjectId " << hex(take(12));
            break;
        case 0x08:
            m_out << (takeNumber<char>() != 0 ? "true" : "false");
            break;
        case 0x09:
            m_out << "date " << takeNumber<std::int64_t>();
            break;
        case 0x0A:
            m_out << "null";
            break;
        case 0x10:
            m_out << "int32 " << takeNumber<std::int32_t>();
            break;
        case 0x12:
            m_out << "int64 " << takeNumber<std::int64_t>();
            break;
        default:
            // The lengths of the other types are not known here; the bytes say it all the same.
            m_out << "type 0x" << hex(std::string(1, static_cast<char>(type)))
                  << "and all after it " << hex(take(m_rest.size()));
        }
    }

    std::string_view m_rest;
    std::ostream& m_out;
};

} // namespace detail

inline void PrintTo(const document_bytes& document, std::ostream* out) {
    *out << document.bytes.size() << " bytes ";
    detail::printer printer{document.bytes, *out};
    printer.printDocument();
    printer.printRest();
    *out << "\n      " << detail::printer::hex(document.bytes);
}

} // namespace test_support::raw_bson
