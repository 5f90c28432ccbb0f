#pragma once

#include <cerrno>
#include <chrono>
#include <functional>
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

/// Lets that time go by for this thread, without waiting and for good: such a clock never goes
/// back. Only the clock that tells how long something takes.
void skipTime(std::chrono::nanoseconds time);

/// While it lives, a usleep() of this thread, and a poll() that would only wait out its time, is
/// over at once, and the time skipped, so that time-outs of any length can be seen. What a poll()
/// watches is asked about: a connection that is being made says nothing by itself, and of others
/// `isSilent` knows whether something will come, by the local port.
class SkippedWaits {
public:
    explicit SkippedWaits(std::function<bool(int port)> isSilent);
    ~SkippedWaits();
    SkippedWaits(const SkippedWaits&) = delete;
    SkippedWaits& operator=(const SkippedWaits&) = delete;

    /// For system_calls.cpp.
    bool isSilent(int fd) const;
    static bool isConnecting(int fd);

private:
    std::function<bool(int port)> m_isSilent;
};

/// While it lives, look-ups of the name by this thread find these IPv4 addresses, in this order.
class NameWithAddresses {
public:
    NameWithAddresses(std::string name, std::vector<std::string> addresses);
    ~NameWithAddresses();
    NameWithAddresses(const NameWithAddresses&) = delete;
    NameWithAddresses& operator=(const NameWithAddresses&) = delete;

    const std::string& name() const { return m_name; }
    const std::vector<std::string>& addresses() const { return m_addresses; }

private:
    std::string m_name;
    std::vector<std::string> m_addresses;
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
