#pragma once

#include <clocale>
#include <locale.h>

namespace bson_utils {

/// While it lives, the C library reads and prints this thread's numbers with a decimal point.
///
/// libbson's JSON goes through strtod() and printf(), which follow the process's locale: with a
/// decimal comma, as QCoreApplication sets it for many users, 2.5 would be read as 2 and printed as
/// a text that is no JSON.
class numeric_locale {
public:
    numeric_locale() : m_previous(uselocale(decimalPoint())) {}
    ~numeric_locale() { uselocale(m_previous); }

    numeric_locale(const numeric_locale&) = delete;
    numeric_locale& operator=(const numeric_locale&) = delete;

private:
    // Made once and kept: threads may use it until the process ends.
    static locale_t decimalPoint() {
        static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
        return locale;
    }

    locale_t m_previous;
};

} // namespace bson_utils
