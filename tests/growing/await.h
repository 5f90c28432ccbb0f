#pragma once

#include "tests/support/eventually.h"

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>

namespace growing {

/// Returns once the condition holds; throws std::runtime_error, which says what was awaited, if it
/// does not within two minutes.
inline void await(const std::function<bool()>& condition, const std::string& what) {
    if (!test_support::eventually(condition, std::chrono::minutes(2))) {
        throw std::runtime_error("in vain waited for: " + what);
    }
}

} // namespace growing
