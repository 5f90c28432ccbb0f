#include "tests/support/system_calls.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <ctime>
#include <span>
#include <thread>
#include <utility>

namespace test_support {

namespace {

thread_local Interruptions* interruptions = nullptr;
thread_local std::chrono::milliseconds lookupDelay{0};
thread_local RedirectedPort* redirectedPort = nullptr;
thread_local std::chrono::nanoseconds skipped{0};
thread_local const SkippedWaits* skippedWaits = nullptr;
thread_local const NameWithAddresses* named = nullptr;

template <typename Function>
Function* theSystems(const char* name) {
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}

bool isRedirected(const sockaddr* address, socklen_t size, sockaddr_in& target) {
    if (!redirectedPort || address->sa_family != AF_INET || size < sizeof target) {
        return false;
    }
    std::memcpy(&target, address, sizeof target);
    if (ntohs(target.sin_port) != redirectedPort->from()) {
        return false;
    }
    std::array<char, INET_ADDRSTRLEN> text{};
    ::inet_ntop(AF_INET, &target.sin_addr, text.data(), text.size());
    redirectedPort->add(text.data());
    target.sin_port = htons(static_cast<in_port_t>(redirectedPort->to()));
    target.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return true;
}

} // namespace

Interruptions::Interruptions(SystemCall call, int times, int error)
    : m_call(call), m_left(times), m_error(error) {
    interruptions = this;
}

Interruptions::~Interruptions() {
    interruptions = nullptr;
}

bool Interruptions::take(SystemCall call) {
    if (!interruptions || interruptions->m_call != call || interruptions->m_left == 0) {
        return false;
    }
    --interruptions->m_left;
    errno = interruptions->m_error;
    return true;
}

void skipTime(std::chrono::nanoseconds time) {
    skipped += time;
}

SkippedWaits::SkippedWaits(std::function<bool(int port)> isSilent)
    : m_isSilent(std::move(isSilent)) {
    skippedWaits = this;
}

SkippedWaits::~SkippedWaits() {
    skippedWaits = nullptr;
}

bool SkippedWaits::isConnecting(int fd) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    return ::getpeername(fd, reinterpret_cast<sockaddr*>(&address), &size) != 0;
}

bool SkippedWaits::isSilent(int fd) const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &size);
    return isConnecting(fd) || m_isSilent(ntohs(address.sin_port));
}

NameWithAddresses::NameWithAddresses(std::string name, std::vector<std::string> addresses)
    : m_name(std::move(name)), m_addresses(std::move(addresses)) {
    named = this;
}

NameWithAddresses::~NameWithAddresses() {
    named = nullptr;
}

SlowNameLookup::SlowNameLookup(std::chrono::milliseconds delay) {
    lookupDelay = delay;
}

SlowNameLookup::~SlowNameLookup() {
    lookupDelay = std::chrono::milliseconds(0);
}

RedirectedPort::RedirectedPort(int from, int to) : m_from(from), m_to(to) {
    redirectedPort = this;
}

RedirectedPort::~RedirectedPort() {
    redirectedPort = nullptr;
}

extern "C" {

int connect(int fd, const sockaddr* address, socklen_t size) {
    static const auto call = theSystems<decltype(::connect)>("connect");
    sockaddr_in target{};
    const int result = isRedirected(address, size, target)
                           ? call(fd, reinterpret_cast<const sockaddr*>(&target), sizeof target)
                           : call(fd, address, size);
    // It goes on by itself also when it is interrupted.
    return Interruptions::take(SystemCall::connect) ? -1 : result;
}

int poll(pollfd* watched, nfds_t count, int timeoutMsecs) {
    static const auto call = theSystems<decltype(::poll)>("poll");
    if (Interruptions::take(SystemCall::poll)) {
        return -1;
    }
    if (!skippedWaits || timeoutMsecs <= 0) {
        return call(watched, count, timeoutMsecs);
    }
    for (int left = timeoutMsecs;; --left) {
        // What is silent gets a moment too: it may have closed, or been refused.
        const int ready = call(watched, count, 1);
        if (ready != 0 || left <= 1) {
            return ready;
        }
        const std::span fds(watched, count);
        if (std::ranges::all_of(
                fds, [](int fd) { return skippedWaits->isSilent(fd); }, &pollfd::fd)) {
            // A busy machine takes a while for a connection to itself; and what was sent before the
            // silence may have come just now.
            const bool isConnecting =
                std::ranges::any_of(fds, SkippedWaits::isConnecting, &pollfd::fd);
            if (const int late = call(watched, count, isConnecting ? 20 : 0); late != 0) {
                return late;
            }
            skipTime(std::chrono::milliseconds(left));
            return 0;
        }
    }
}

int usleep(useconds_t usecs) {
    static const auto call = theSystems<decltype(::usleep)>("usleep");
    if (!skippedWaits) {
        return call(usecs);
    }
    skipTime(std::chrono::microseconds(usecs));
    return 0;
}

int clock_gettime(clockid_t clock, timespec* time) {
    static const auto call = theSystems<decltype(::clock_gettime)>("clock_gettime");
    const int result = call(clock, time);
    if ((clock == CLOCK_MONOTONIC || clock == CLOCK_MONOTONIC_RAW) && result == 0) {
        const auto later =
            std::chrono::seconds(time->tv_sec) + std::chrono::nanoseconds(time->tv_nsec) + skipped;
        time->tv_sec = std::chrono::duration_cast<std::chrono::seconds>(later).count();
        time->tv_nsec = (later % std::chrono::seconds(1)).count();
    }
    return result;
}

ssize_t recv(int fd, void* buffer, std::size_t size, int flags) {
    static const auto call = theSystems<decltype(::recv)>("recv");
    return Interruptions::take(SystemCall::recv) ? -1 : call(fd, buffer, size, flags);
}

ssize_t send(int fd, const void* buffer, std::size_t size, int flags) {
    static const auto call = theSystems<decltype(::send)>("send");
    return Interruptions::take(SystemCall::send) ? -1 : call(fd, buffer, size, flags);
}

int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** list) {
    static const auto call = theSystems<decltype(::getaddrinfo)>("getaddrinfo");
    std::this_thread::sleep_for(lookupDelay);
    if (!named || name != named->name()) {
        return call(name, service, hints, list);
    }
    // One list after the other; glibc frees it element by element.
    addrinfo** end = list;
    for (const std::string& address : named->addresses()) {
        if (const int failure = call(address.c_str(), service, hints, end)) {
            return failure;
        }
        while (*end) {
            end = &(*end)->ai_next;
        }
    }
    return 0;
}

} // extern "C"

} // namespace test_support
