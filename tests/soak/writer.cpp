#include "tests/soak/writer.h"

#include <pthread.h>
#include <signal.h>

#include <exception>
#include <utility>

namespace soak {

Writer::Writer(std::unique_ptr<Kind> kind) : m_kind(std::move(kind)) {}

void Writer::start() {
    m_thread = std::jthread([this](const std::stop_token& stop) { run(stop); });
}

void Writer::stop() {
    m_thread.request_stop();
    if (m_thread.joinable()) {
        m_thread.join();
    }
}

void Writer::serversAreBack() {
    m_isToCheck = true;
    m_calls.serversAreBack();
}

void Writer::run(const std::stop_token& stop) {
    // Signals are the main thread's.
    sigset_t all;
    sigfillset(&all);
    pthread_sigmask(SIG_BLOCK, &all, nullptr);
    for (int call = 1; !stop.stop_requested(); ++call) {
        save(call);
        if (m_isToCheck && m_calls.works()) {
            check();
        }
    }
}

void Writer::save(int call) {
    std::optional<std::string> failure;
    const auto begin = Clock::now();
    try {
        m_kind->save(call);
    } catch (const std::exception& exception) {
        failure = exception.what();
        keep(exception);
    }
    const auto end = Clock::now();
    m_kind->note(call, !failure);
    m_calls.note(begin, end, failure);
}

void Writer::check() {
    try {
        m_kind->check();
        m_isToCheck = false;
    } catch (const std::exception& exception) {
        // Another server is not there: again after the next call.
        keep(exception);
    }
}

void Writer::keep(const std::exception& exception) {
    const std::lock_guard lock(m_mutex);
    m_lastFailure = exception.what();
}

std::string Writer::giveUp() {
    if (isSettled()) {
        return {};
    }
    const std::lock_guard lock(m_mutex);
    const std::string why =
        (m_calls.works() ? "cannot be read: " : "does not work: ") + m_lastFailure;
    m_calls.giveUp();
    m_isToCheck = false;
    return why;
}

} // namespace soak
