#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace test_support {

/// False when the condition does not come true within half a minute.
inline bool eventually(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::yield();
    }
    return true;
}

} // namespace test_support
