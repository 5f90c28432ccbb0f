#include "model/bson/json_text.h"

#include "model/bson/bson_error.h"
#include "model/bson/numeric_locale.h"
#include "model/json/exact_numbers.h"

#include <QByteArray>
#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <memory>
#include <string>

namespace bson_utils {

bool isAscii(std::string_view text) {
    unsigned char bits = 0;
    for (const char c : text) {
        bits |= static_cast<unsigned char>(c);
    }
    return bits < 0x80;
}

namespace {

/// Fewer than libbson renders and Qt's parser takes.
constexpr int maxDepth = 100;

/// The parser goes through longer texts more slowly than insertion does.
constexpr std::size_t maxTextSize = 200;

bool isUnescaped(char c) {
    return static_cast<unsigned char>(c) >= 0x20 && c != '"' && c != '\\';
}

bool isOrdinaryKey(std::string_view key) {
    return std::ranges::all_of(
        key, [](char c) { return isUnescaped(c) && static_cast<unsigned char>(c) < 0x7F; });
}

// 0xEF begins the byte order mark, which decoders treat differently.
bool isOrdinaryUtf8(std::string_view text) {
    return isAscii(text) || (text.find('\xEF') == std::string_view::npos &&
                             bson_utf8_validate(text.data(), text.size(), false));
}

/// Writes compact JSON. Each part is false, and the text of no use, at the first thing that is not
/// ordinary.
class writer {
public:
    explicit writer(std::size_t usualSize) { m_text.reserve(usualSize); }

    const std::string& text() const { return m_text; }

    bool writeDocument(bson_iter_t members, int depth) {
        return writeChildren(members, depth, '{', '}', [this](std::string_view key) {
            m_text += '"';
            m_text += key;
            m_text += "\":";
        });
    }

private:
    template <typename WriteKey>
    bool writeChildren(bson_iter_t& children, int depth, char open, char close,
                       const WriteKey& writeKey) {
        m_text += open;
        for (bool first = true; bson_iter_next(&children); first = false) {
            if (!first) {
                m_text += ',';
            }
            const std::string_view key{bson_iter_key(&children), bson_iter_key_len(&children)};
            writeKey(key);
            // The keys of an array are not seen in JSON, but libbson refuses damaged ones there
            // too.
            if (!isOrdinaryKey(key) || !writeValue(children, depth)) {
                return false;
            }
        }
        m_text += close;
        return children.err_off == 0;
    }

    bool writeValue(const bson_iter_t& element, int depth) {
        bson_iter_t children;
        switch (bson_iter_type(&element)) {
        case BSON_TYPE_DOUBLE:
            writeNumber(bson_iter_double(&element));
            return std::isfinite(bson_iter_double(&element));
        case BSON_TYPE_UTF8: {
            std::uint32_t length = 0;
            const char* text = bson_iter_utf8(&element, &length);
            return writeText({text, length});
        }
        case BSON_TYPE_BOOL:
            m_text += bson_iter_bool(&element) ? "true" : "false";
            return true;
        case BSON_TYPE_NULL:
            m_text += "null";
            return true;
        case BSON_TYPE_INT32:
            writeNumber(bson_iter_int32(&element));
            return true;
        case BSON_TYPE_INT64: {
            const std::int64_t number = bson_iter_int64(&element);
            writeNumber(number);
            // Others are rounded to a double when they are inserted, and not when they are parsed.
            return isExactAsDouble(number);
        }
        case BSON_TYPE_DOCUMENT:
            return depth < maxDepth && enter(element, bson_iter_document, children) &&
                   writeDocument(children, depth + 1);
        case BSON_TYPE_ARRAY:
            return depth < maxDepth && enter(element, bson_iter_array, children) &&
                   writeChildren(children, depth + 1, '[', ']', [](std::string_view /*key*/) {});
        default:
            return false;
        }
    }

    /// Unlike bson_iter_recurse, false also if the zero at the end is missing.
    static bool enter(const bson_iter_t& element, decltype(bson_iter_document)* bytesOf,
                      bson_iter_t& children) {
        std::uint32_t size = 0;
        const std::uint8_t* data = nullptr;
        bytesOf(&element, &size, &data);
        return bson_iter_init_from_data(&children, data, size);
    }

    void writeNumber(auto number) {
        std::array<char, 32> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        m_text.append(digits.data(), end);
    }

    bool writeText(std::string_view text) {
        if (text.size() > maxTextSize || !isOrdinaryUtf8(text)) {
            return false;
        }
        m_text += '"';
        while (!text.empty()) {
            const auto plain = std::ranges::find_if_not(text, isUnescaped) - text.begin();
            m_text += text.substr(0, static_cast<std::size_t>(plain));
            text.remove_prefix(static_cast<std::size_t>(plain));
            if (!text.empty()) {
                writeEscape(static_cast<unsigned char>(text.front()));
                text.remove_prefix(1);
            }
        }
        m_text += '"';
        return true;
    }

    void writeEscape(unsigned char code) {
        static constexpr std::string_view hexDigits = "0123456789abcdef";
        m_text += "\\u00";
        m_text += hexDigits[code >> 4U];
        m_text += hexDigits[code & 0xFU];
    }

    std::string m_text;
};

QJsonObject parsed(std::string_view json) {
    return QJsonDocument::fromJson(
               QByteArray::fromRawData(json.data(), static_cast<int>(json.size())))
        .object();
}

} // namespace

std::optional<QJsonObject> ordinaryObject(const bsoncxx::v1::document::view& document) {
    bson_iter_t members;
    // Rarely is the text longer than that.
    writer json{2 * document.size()};
    if (!bson_iter_init_from_data(&members, document.data(), document.size()) ||
        !json.writeDocument(members, 0)) {
        return std::nullopt;
    }
    return parsed(json.text());
}

std::optional<QString> ordinaryText(std::string_view utf8) {
    const int size = static_cast<int>(utf8.size());
    if (isAscii(utf8)) {
        return QString::fromLatin1(utf8.data(), size);
    }
    return isOrdinaryUtf8(utf8) ? std::optional{QString::fromUtf8(utf8.data(), size)}
                                : std::nullopt;
}

QJsonObject legacyObject(const bsoncxx::v1::document::view& document) {
    const numeric_locale decimalPoint;
    bson_t bson;
    std::size_t length = 0;
    const bool whole = bson_init_static(&bson, document.data(), document.size());
    const std::unique_ptr<char, decltype(&bson_free)> text{
        whole ? bson_as_legacy_extended_json(&bson, &length) : nullptr, &bson_free};
    if (text == nullptr) {
        refuse(bson_errc::malformed, "a document of " + std::to_string(document.size()) +
                                         " bytes cannot be rendered as JSON");
    }
    return parsed({text.get(), length});
}

} // namespace bson_utils
