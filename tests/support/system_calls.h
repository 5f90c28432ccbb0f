#pragma once

#include <cerrno>
#include <chrono>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

// In an executable that has system_calls.cpp among its sources, some calls to the system go through
// that file first, also those of the shared libraries and plug-ins that it loads. One object of
// each of these classes at a time.

enum class SystemCall { connect, poll, recv, send };

/// While it lives, the first `times` such calls of this thread fail with `error`; by default as
/// those do that a signal interrupts.
class Interruptions {
public:
    Interruptions(SystemCall call, int times, int error = EINTR);
    ~Interruptions();
    Interruptions(const Interruptions&) = delete;
    Interruptions& operator=(const Interruptions&) = delete;

    /// How many are still to come.
    int left() const { return m_left; }

    /// For system_calls.cpp: true for a call to be interrupted, with errno set.
    static bool take(SystemCall call);

private:
    SystemCall m_call;
    int m_left;
    int m_error;
};

/// While it lives, this thread's look-ups of names take that long.
class SlowNameLookup {
public:
    explicit SlowNameLookup(std::chrono::milliseconds delay);
    ~SlowNameLookup();
    SlowNameLookup(const SlowNameLookup&) = delete;
    SlowNameLookup& operator=(const SlowNameLookup&) = delete;
};

/// While it lives, connections of this thread to the port `from`, at whatever IPv4 address, go to
/// the port `to` of 127.0.0.1.
class RedirectedPort {
public:
    RedirectedPort(int from, int to);
    ~RedirectedPort();
    RedirectedPort(const RedirectedPort&) = delete;
    RedirectedPort& operator=(const RedirectedPort&) = delete;

    /// The addresses that were asked for.
    const std::vector<std::string>& asked() const { return m_asked; }

    int from() const { return m_from; }
    int to() const { return m_to; }
    void add(std::string address) { m_asked.push_back(std::move(address)); }

private:
    int m_from;
    int m_to;
    std::vector<std::string> m_asked;
};

} // namespace test_support
