#include "redisclient/tcp_socket.h"

#include <QByteArray>

#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <iterator>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace RedisClient {

namespace {

std::string errorText(int error) {
    return std::generic_category().message(error);
}

template <typename Value>
void setOption(const TcpSocket& socket, int level, int option, const Value& value) {
    if (::setsockopt(socket.fd(), level, option, &value, sizeof value) != 0) {
        throw std::system_error(errno, std::generic_category(), "setsockopt");
    }
}

/// A server that vanished without a word is found gone after about half a minute of idleness, and
/// the next command can still go over a new connection.
void probeWhenIdle(const TcpSocket& socket) {
    constexpr int idleSeconds = 15;
    constexpr int intervalSeconds = 5;
    constexpr int probes = 3;
    setOption(socket, SOL_SOCKET, SO_KEEPALIVE, 1);
    setOption(socket, IPPROTO_TCP, TCP_KEEPIDLE, idleSeconds);
    setOption(socket, IPPROTO_TCP, TCP_KEEPINTVL, intervalSeconds);
    setOption(socket, IPPROTO_TCP, TCP_KEEPCNT, probes);
}

void blockWithPatience(const TcpSocket& socket) {
    const std::chrono::microseconds patience = TcpSocket::patience;
    setOption(socket, SOL_SOCKET, SO_RCVTIMEO,
              timeval{.tv_sec = 0, .tv_usec = static_cast<suseconds_t>(patience.count())});
    int doesNotBlock = 0;
    if (::ioctl(socket.fd(), FIONBIO, &doesNotBlock) != 0) {
        throw std::system_error(errno, std::generic_category(), "ioctl");
    }
}

TcpSocket connectTo(const addrinfo& address, Clock::time_point deadline) {
    TcpSocket socket(::socket(address.ai_family, address.ai_socktype | SOCK_NONBLOCK | SOCK_CLOEXEC,
                              address.ai_protocol));
    if (socket.fd() < 0) {
        throw std::runtime_error("socket: " + errorText(errno));
    }
    if (::connect(socket.fd(), address.ai_addr, address.ai_addrlen) != 0) {
        // An interrupted connect goes on by itself, like one in progress.
        if (errno != EINPROGRESS && errno != EINTR) {
            throw std::runtime_error("connect: " + errorText(errno));
        }
        switch (waitUntilReady(socket.fd(), POLLOUT, deadline)) {
        case Readiness::ready:
            break;
        case Readiness::timedOut:
            throw std::runtime_error("connect: " + errorText(ETIMEDOUT));
        case Readiness::failed:
            throw std::runtime_error("poll: " + errorText(errno));
        }
        int error = 0;
        socklen_t size = sizeof error;
        if (::getsockopt(socket.fd(), SOL_SOCKET, SO_ERROR, &error, &size) != 0) {
            error = errno;
        }
        if (error != 0) {
            throw std::runtime_error("connect: " + errorText(error));
        }
    }
    setOption(socket, IPPROTO_TCP, TCP_NODELAY, 1);
    probeWhenIdle(socket);
    blockWithPatience(socket);
    return socket;
}

} // namespace

TcpSocket::~TcpSocket() {
    if (m_fd >= 0) {
        ::close(m_fd);
    }
}

TcpSocket::TcpSocket(TcpSocket&& other) noexcept : m_fd(std::exchange(other.m_fd, -1)) {}

TcpSocket& TcpSocket::operator=(TcpSocket&& other) noexcept {
    TcpSocket taken(std::move(other));
    std::swap(m_fd, taken.m_fd);
    return *this;
}

void AddressListDeleter::operator()(addrinfo* list) const noexcept {
    ::freeaddrinfo(list);
}

AddressList resolve(const QString& host, int port) {
    if (host.isEmpty() || host.contains(QChar::Null)) {
        throw std::runtime_error("the host name is empty or has a zero character in it");
    }
    if (port < 1 || port > 65535) {
        throw std::runtime_error("there is no port " + std::to_string(port));
    }
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    hints.ai_socktype = SOCK_STREAM;
    hints.ai_flags = AI_NUMERICSERV;
    addrinfo* list = nullptr;
    const int status =
        ::getaddrinfo(host.toUtf8().constData(), std::to_string(port).c_str(), &hints, &list);
    if (status != 0) {
        const std::string cause = status == EAI_SYSTEM ? errorText(errno) : gai_strerror(status);
        throw std::runtime_error("resolving the host name: " + cause);
    }
    return AddressList(list);
}

TcpSocket connectTcp(const AddressList& addresses, Clock::time_point deadline) {
    int remaining = 0;
    for (const addrinfo* address = addresses.get(); address; address = address->ai_next) {
        ++remaining;
    }
    std::string cause = "connect: " + errorText(ETIMEDOUT);
    for (const addrinfo* address = addresses.get(); address; address = address->ai_next) {
        const auto now = Clock::now();
        try {
            return connectTo(*address, now + (deadline - now) / remaining--);
        } catch (const std::runtime_error& failure) {
            cause = failure.what();
        }
    }
    throw std::runtime_error(cause);
}

Readiness waitUntilReady(int fd, short events, Clock::time_point deadline) noexcept {
    for (;;) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) {
            return Readiness::timedOut;
        }
        pollfd watched{.fd = fd, .events = events, .revents = 0};
        const int count =
            ::poll(&watched, 1, static_cast<int>(std::min<decltype(left)>(left, INT_MAX)));
        if (count > 0) {
            return Readiness::ready;
        }
        if (count < 0 && errno != EINTR) {
            return Readiness::failed;
        }
    }
}

} // namespace RedisClient
