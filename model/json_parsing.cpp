#include "model/json_parsing.h"

#include <bson/bson.h>

#include <QByteArray>
#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

namespace bson_utils {

namespace {

/// Fewer than Qt's parser takes.
constexpr int maxDepth = 100;

/// The parser goes through longer texts more slowly than insertion does.
constexpr std::size_t maxTextSize = 200;

/// From here on an inserted whole number is rounded to a double.
constexpr std::int64_t wholeLimit = std::int64_t{1} << 53;

enum class character : unsigned char { plain, escaped, multibyte, doubtful };

// 0xEF begins the byte order mark, which decoders treat differently.
constexpr std::array<character, 256> characters = [] {
    std::array<character, 256> kinds{};
    for (std::size_t code = 0; code < kinds.size(); ++code) {
        if (code < 0x20 || code == '"' || code == '\\') {
            kinds[code] = character::escaped;
        } else if (code >= 0x80) {
            kinds[code] = code == 0xEF ? character::doubtful : character::multibyte;
        }
    }
    return kinds;
}();

character kindOf(char c) {
    return characters[static_cast<unsigned char>(c)];
}

/// Each part is false, and the text of no use, where the parser would not do.
class writer {
public:
    explicit writer(std::size_t usualSize) { m_text.reserve(usualSize); }

    bool writeMembers(bson_iter_t members, int depth) {
        m_text += '{';
        for (bool first = true; bson_iter_next(&members); first = false) {
            if (!first) {
                m_text += ',';
            }
            const std::string_view key{bson_iter_key(&members), bson_iter_key_len(&members)};
            if (!std::ranges::all_of(
                    key, [](char c) { return kindOf(c) == character::plain && c != '\x7F'; })) {
                return false;
            }
            m_text += '"';
            m_text += key;
            m_text += "\":";
            if (!writeValue(members, depth)) {
                return false;
            }
        }
        m_text += '}';
        return members.err_off == 0;
    }

    const std::string& text() const { return m_text; }

private:
    bool writeElements(bson_iter_t elements, int depth) {
        m_text += '[';
        for (bool first = true; bson_iter_next(&elements); first = false) {
            if (!first) {
                m_text += ',';
            }
            if (!writeValue(elements, depth)) {
                return false;
            }
        }
        m_text += ']';
        return elements.err_off == 0;
    }

    bool writeValue(const bson_iter_t& element, int depth) {
        bson_iter_t children;
        switch (bson_iter_type(&element)) {
        case BSON_TYPE_DOUBLE: {
            const double number = bson_iter_double(&element);
            writeNumber(number);
            return std::isfinite(number);
        }
        case BSON_TYPE_UTF8: {
            std::uint32_t length = 0;
            const char* text = bson_iter_utf8(&element, &length);
            return writeString({text, length});
        }
        case BSON_TYPE_BOOL:
            m_text += bson_iter_bool(&element) ? "true" : "false";
            return true;
        case BSON_TYPE_INT32:
            writeNumber(bson_iter_int32(&element));
            return true;
        case BSON_TYPE_INT64: {
            const std::int64_t number = bson_iter_int64(&element);
            writeNumber(number);
            return -wholeLimit < number && number < wholeLimit;
        }
        case BSON_TYPE_DOCUMENT:
            return depth < maxDepth && bson_iter_recurse(&element, &children) &&
                   writeMembers(children, depth + 1);
        case BSON_TYPE_ARRAY:
            return depth < maxDepth && bson_iter_recurse(&element, &children) &&
                   writeElements(children, depth + 1);
        default:
            m_text += "null";
            return true;
        }
    }

    void writeNumber(auto number) {
        std::array<char, 32> digits{};
        const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
        m_text.append(digits.data(), end);
    }

    bool writeString(std::string_view text) {
        if (text.size() > maxTextSize) {
            return false;
        }
        m_text += '"';
        bool ascii = true;
        std::size_t written = 0;
        for (std::size_t at = 0; at < text.size(); ++at) {
            switch (kindOf(text[at])) {
            case character::plain:
                break;
            case character::escaped:
                m_text += text.substr(written, at - written);
                writeEscape(static_cast<unsigned char>(text[at]));
                written = at + 1;
                break;
            case character::multibyte:
                ascii = false;
                break;
            case character::doubtful:
                return false;
            }
        }
        m_text += text.substr(written);
        m_text += '"';
        return ascii || bson_utf8_validate(text.data(), text.size(), false);
    }

    void writeEscape(unsigned char code) {
        static constexpr std::string_view hexDigits = "0123456789abcdef";
        m_text += "\\u00";
        m_text += hexDigits[code >> 4U];
        m_text += hexDigits[code & 0xFU];
    }

    std::string m_text;
};

} // namespace

std::optional<QJsonObject> parsedObject(const bsoncxx::v1::document::view& document) {
    bson_iter_t members;
    if (!bson_iter_init_from_data(&members, document.data(), document.size())) {
        return std::nullopt;
    }
    // Rarely is the text longer than that.
    writer json{2 * document.size()};
    if (!json.writeMembers(members, 0)) {
        return std::nullopt;
    }
    const std::string& text = json.text();
    QJsonParseError error{};
    const auto parsed = QJsonDocument::fromJson(
        QByteArray::fromRawData(text.data(), static_cast<int>(text.size())), &error);
    if (error.error != QJsonParseError::NoError) {
        return std::nullopt;
    }
    return parsed.object();
}

} // namespace bson_utils
