#pragma once

#include <QString>

namespace host {

/// The unit at the end of a reading's name, as in total_m3.
struct FieldUnit {
    /// With the underscore before it.
    const char* suffix;
    const char16_t* text;
};

/// Null if the name ends in none.
const FieldUnit* unitOf(const QString& name);

} // namespace host
