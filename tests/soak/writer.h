#pragma once

#include "tests/soak/call_log.h"
#include "tests/soak/kind.h"

#include <atomic>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace soak {

/// A thread that stores records of one kind without pause, whatever the servers do.
class Writer {
public:
    explicit Writer(std::unique_ptr<Kind> kind);

    const Kind& kind() const { return *m_kind; }

    void start();
    /// Returns after the call under way.
    void stop();

    /// From now on all servers serve.
    void serversAreBack();
    /// Whether a call has worked since, and what may have been lost until then has been looked at.
    bool isSettled() const { return m_calls.works() && !m_isToCheck; }
    /// Nobody waits for it any longer. Why it is not settled; empty if it is.
    std::string giveUp();

    CallFigures calls() const { return m_calls.figures(); }
    /// When it has stopped, and the servers are there.
    Findings readBack() { return m_kind->readBack(); }

private:
    void run(const std::stop_token& stop);
    void save(int call);
    void check();
    void keep(const std::exception& exception);

    std::unique_ptr<Kind> m_kind;
    CallLog m_calls;
    std::atomic<bool> m_isToCheck = false;
    std::mutex m_mutex;
    std::string m_lastFailure;
    std::jthread m_thread; // ends before what it uses
};

} // namespace soak
