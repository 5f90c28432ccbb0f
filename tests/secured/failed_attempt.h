#pragma once

#include <cxxabi.h>
#include <gmock/gmock.h>

#include <chrono>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>
#include <typeinfo>

namespace test_support {

/// How something failed that was tried with a server: all that a host can go by. Nothing but the
/// time is set if it succeeded.
struct FailedAttempt {
    std::string type; ///< of the exception, with its namespaces
    std::string text;
    int code = 0; ///< if it is a std::system_error
    std::chrono::milliseconds took{};

    bool operator==(const FailedAttempt&) const = default;

    friend void PrintTo(const FailedAttempt& failed, std::ostream* out) {
        *out << (failed.type.empty() ? "success" : failed.type) << " with code " << failed.code
             << " after " << failed.took.count() << " ms: " << failed.text;
    }
};

inline FailedAttempt attempt(const std::function<void()>& action) {
    const auto start = std::chrono::steady_clock::now();
    FailedAttempt failed;
    try {
        action();
    } catch (const std::exception& error) {
        const std::unique_ptr<char, decltype(&std::free)> name{
            abi::__cxa_demangle(typeid(error).name(), nullptr, nullptr, nullptr), &std::free};
        failed.type = name.get();
        failed.text = error.what();
        if (const auto* const system = dynamic_cast<const std::system_error*>(&error)) {
            failed.code = system->code().value();
        }
    }
    failed.took = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start);
    return failed;
}

/// With an exception of that type and a text that matches, before `timeOut`.
template <typename Text>
auto failsBefore(std::chrono::milliseconds timeOut, const char* type, const Text& text) {
    using testing::Field;
    return testing::AllOf(Field("type", &FailedAttempt::type, type),
                          Field("text", &FailedAttempt::text, text),
                          Field("took", &FailedAttempt::took, testing::Lt(timeOut)));
}

inline constexpr const char* mongoException = "mongocxx::v1::exception";
inline constexpr const char* redisException = "RedisClient::Connection::Exception";

inline auto succeeds() {
    return testing::Field("type", &FailedAttempt::type, "");
}

} // namespace test_support
