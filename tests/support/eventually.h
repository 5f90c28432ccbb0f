#pragma once

#include <chrono>
#include <functional>
#include <thread>

namespace test_support {

/// Polls the condition; false when it does not come true in time.
inline bool eventually(const std::function<bool()>& condition,
                       std::chrono::seconds patience = std::chrono::seconds(30)) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        // Servers and threads that it waits for want the processor.
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

} // namespace test_support
