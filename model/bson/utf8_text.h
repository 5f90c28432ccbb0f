#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <cstddef>
#include <string_view>

namespace bson_utils {

/// The UTF-8 form of a text, without a memory block of its own if the text is short and ASCII, as
/// nearly all are.
class utf8_text {
public:
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): zeros would cost as much as the text
    explicit utf8_text(const QString& text) : m_isAscii(narrow(text)) {
        if (!m_isAscii) {
            m_bytes = text.toUtf8();
            m_view = {m_bytes.constData(), static_cast<std::size_t>(m_bytes.size())};
        }
    }

    ~utf8_text() = default;
    utf8_text(const utf8_text&) = delete;
    utf8_text& operator=(const utf8_text&) = delete;

    std::string_view view() const { return m_view; }

    /// Said of short texts only.
    bool isAscii() const { return m_isAscii; }

private:
    bool narrow(const QString& text) {
        const auto size = static_cast<std::size_t>(text.size());
        if (size > m_ascii.size()) {
            return false;
        }
        unsigned bits = 0;
        const QChar* const units = text.constData();
        for (std::size_t at = 0; at < size; ++at) {
            bits |= units[at].unicode();
            m_ascii[at] = static_cast<char>(units[at].unicode());
        }
        m_view = {m_ascii.data(), size};
        return bits < 0x80;
    }

    std::array<char, 128> m_ascii; // filled as far as m_view goes
    QByteArray m_bytes;
    std::string_view m_view;
    bool m_isAscii;
};

} // namespace bson_utils
