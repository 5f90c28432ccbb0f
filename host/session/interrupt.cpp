#include "host/session/interrupt.h"

#include <array>
#include <csignal>

namespace host {

namespace {

constexpr std::array signals{SIGINT, SIGTERM};

volatile std::sig_atomic_t noted = 0;

void note(int /*signal*/) {
    noted = 1;
}

} // namespace

Interrupt::Interrupt() {
    noted = 0;
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
    return noted != 0;
}

} // namespace host
