#include "tests/support/system_calls.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <cstring>
#include <thread>

namespace test_support {

namespace {

thread_local Interruptions* interruptions = nullptr;
thread_local std::chrono::milliseconds lookupDelay{0};
thread_local RedirectedPort* redirectedPort = nullptr;

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
    return Interruptions::take(SystemCall::poll) ? -1 : call(watched, count, timeoutMsecs);
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
    return call(name, service, hints, list);
}

} // extern "C"

} // namespace test_support
