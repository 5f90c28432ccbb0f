#include "host/session/interrupt.h"

#include <array>
#include <atomic>
#include <csignal>

namespace host {

namespace {

constexpr std::array signals{SIGINT, SIGTERM};

std::atomic<bool> noted = false;
static_assert(std::atomic<bool>::is_always_lock_free, "a signal's handler sets it");

void note(int /*signal*/) {
    noted = true;
}

} // namespace

Interrupt::Interrupt() {
    noted = false;
    struct sigaction action{};
    action.sa_handler = note;
    // The handler is taken back with the first signal. Calls that wait go on: the client libraries
    // would take their end for a fault of the connection.
    action.sa_flags = SA_RESTART | static_cast<int>(SA_RESETHAND);
    for (const int signal : signals) {
        sigaction(signal, &action, nullptr);
    }
}

Interrupt::~Interrupt() {
    for (const int signal : signals) {
        std::signal(signal, SIG_DFL); // NOLINT(cert-err33-c)
    }
}

bool Interrupt::requested() {
    return noted;
}

} // namespace host
