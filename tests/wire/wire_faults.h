#pragma once

#include "tests/support/wire_proxy.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

/// What happens to one request and its answer, as a row of the tests.
struct WireFault {
    const char* name;
    test_support::WireProxy::Fault deal;
    /// Whether the server has done by then what it was asked for.
    bool isDone;
    /// The client learns of it by its time-out only.
    bool takesTheTimeOut = false;
    /// What our Redis client, or the MongoDB driver, says of it.
    const char* cause = "";

    friend void PrintTo(const WireFault& fault, std::ostream* out) { *out << fault.name; }
};

/// Those that are the same in every protocol.
inline std::vector<WireFault> brokenConversations() {
    using test_support::Exchange;
    struct Place {
        const char* name;
        bool isDone;
        void (*goThere)(Exchange&);
    };
    static constexpr std::array places{
        Place{"BeforeTheRequest", false, [](Exchange&) {}},
        Place{"InsideTheRequest", false,
              [](Exchange& exchange) { exchange.forward(exchange.request().size() / 2); }},
        Place{"AfterTheRequest", true, [](Exchange& exchange) { exchange.answer(); }},
        Place{"InsideTheAnswer", true,
              [](Exchange& exchange) {
                  const QByteArray answer = exchange.answer();
                  exchange.reply(answer.left(answer.size() / 2));
              }},
    };
    struct Ending {
        const char* name;
        bool takesTheTimeOut;
        const char* cause;
        void (Exchange::*end)();
    };
    static constexpr std::array endings{
        Ending{"Reset", false, "Connection reset by peer", &Exchange::reset},
        Ending{"Closed", false, "the server closed the connection", &Exchange::close},
        Ending{"Stalled", true, "timed out waiting for the answer", &Exchange::stall},
    };
    static const std::vector<std::string> names = [] {
        std::vector<std::string> all;
        for (const Ending& ending : endings) {
            for (const Place& place : places) {
                all.push_back(std::string(ending.name) + place.name);
            }
        }
        return all;
    }();
    std::vector<WireFault> faults;
    for (const Ending& ending : endings) {
        for (const Place& place : places) {
            faults.push_back({names[faults.size()].c_str(),
                              [&place, &ending](Exchange& exchange) {
                                  place.goThere(exchange);
                                  (exchange.*ending.end)();
                              },
                              place.isDone, ending.takesTheTimeOut, ending.cause});
        }
    }
    return faults;
}

/// The server's answer in a form of its own.
inline test_support::WireProxy::Fault answering(std::function<QByteArray(QByteArray)> changed) {
    return [changed = std::move(changed)](test_support::Exchange& exchange) {
        exchange.reply(changed(exchange.answer()));
    };
}

/// The same, and the server stays as it is.
inline test_support::WireProxy::Fault
answeringAtLast(std::function<QByteArray(QByteArray)> changed) {
    return [changed = std::move(changed)](test_support::Exchange& exchange) {
        exchange.reply(changed(exchange.answer()));
        exchange.stall();
    };
}

inline void oneByteAtATime(test_support::Exchange& exchange) {
    for (int i = 1; i < exchange.request().size(); ++i) {
        exchange.forward(1);
    }
    const QByteArray answer = exchange.answer();
    for (const char byte : answer) {
        exchange.reply(QByteArray(1, byte));
    }
}

/// How a call ended and what it took.
struct Ending {
    std::optional<std::string> failure;
    std::chrono::milliseconds took;
};

/// Other exceptions than this pass through and fail the test.
template <typename Exception>
Ending endingOf(const std::function<void()>& call) {
    const auto start = std::chrono::steady_clock::now();
    std::optional<std::string> failure;
    try {
        call();
    } catch (const Exception& exception) {
        failure = exception.what();
    }
    return {failure, std::chrono::duration_cast<std::chrono::milliseconds>(
                         std::chrono::steady_clock::now() - start)};
}

/// The name of a row that is made of others.
template <typename Parameters>
std::string rowName(const testing::TestParamInfo<Parameters>& info) {
    return std::apply(
        [](const auto&... parts) {
            std::string name;
            ((name += (name.empty() ? "" : "_") + std::string(parts.name)), ...);
            return name;
        },
        info.param);
}
