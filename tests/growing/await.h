#pragma once

#include <chrono>
#include <stdexcept>
#include <string>
#include <thread>

namespace growing {

/// Returns once the condition holds; throws std::runtime_error, which says what was awaited, if it
/// does not within two minutes.
template <typename Condition>
void await(const Condition& condition, const std::string& what) {
    using namespace std::chrono_literals;
    const auto deadline = std::chrono::steady_clock::now() + 2min;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("in vain waited for: " + what);
        }
        std::this_thread::sleep_for(5ms);
    }
}

} // namespace growing
