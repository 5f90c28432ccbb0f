#pragma once

#include <cstdint>
#include <limits>

/// From here on, and below its negative, a double does not hold every whole number: 2^53.
inline constexpr std::int64_t wholeLimit = std::int64_t{1} << std::numeric_limits<double>::digits;

/// Whether a double holds the number and both its neighbours.
constexpr bool isExactAsDouble(std::int64_t number) {
    return -wholeLimit < number && number < wholeLimit;
}
