#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>

namespace test_support::literals {

/// UTF-8 text as a QString; a zero character written in it is kept.
inline QString operator""_q(const char* utf8, std::size_t length) {
    return QString::fromUtf8(utf8, static_cast<int>(length));
}

inline QByteArray operator""_qba(const char* bytes, std::size_t length) {
    return {bytes, static_cast<int>(length)};
}

} // namespace test_support::literals
