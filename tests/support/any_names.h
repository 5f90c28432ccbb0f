#pragma once

#include "tests/support/qt_literals.h"

#include <QString>

#include <vector>

namespace test_support {

inline QString ofPlane(uint plane) {
    const uint code = plane * 0x10000 + 0x1F50;
    return QString::fromUcs4(&code, 1) + QLatin1Char('x');
}

/// A character of each plane of Unicode, and what servers, queries and JSON may take for something
/// else.
inline std::vector<QString> anyNames() {
    using namespace literals;
    std::vector<QString> names{
        "a\"b"_q,         "it's"_q,      "\\"_q,     "$gt"_q,        "a.b.c"_q,
        "{}"_q,           "a\0b"_q,      "\0"_q,     "\n\r\t\x7f"_q, " "_q,
        "%1"_q,           "; drop"_q,    "*"_q,      "^a.*$"_q,      "e\u0301"_q,
        "\u00e9"_q,       "\u202eabc"_q, "\ufffd"_q, "\ufffe"_q,     QString(1000, u'\u6f22'),
        "1-0:1.8.0*255"_q};
    for (uint plane = 0; plane <= 0x10; ++plane) {
        names.push_back(ofPlane(plane));
    }
    return names;
}

} // namespace test_support
