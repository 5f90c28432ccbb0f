#include "tests/support/test_socket.h"

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>

namespace test_support {

namespace {

int checked(int result, const char* operation) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category(), operation);
    }
    return result;
}

} // namespace

std::optional<QList<QByteArray>> takeCommand(QByteArray& buffer) {
    int position = 0;
    const auto header = [&]() -> std::optional<int> {
        const int end = buffer.indexOf("\r\n", position);
        if (end < 0) {
            return std::nullopt;
        }
        const int value = buffer.mid(position + 1, end - position - 1).toInt();
        position = end + 2;
        return value;
    };
    const auto count = header();
    if (!count) {
        return std::nullopt;
    }
    QList<QByteArray> parts;
    while (parts.size() < *count) {
        const auto size = header();
        if (!size || buffer.size() < position + *size + 2) {
            return std::nullopt;
        }
        parts.append(buffer.mid(position, *size));
        position += *size + 2;
    }
    buffer.remove(0, position);
    return parts;
}

TestSocket::~TestSocket() {
    if (m_fd >= 0) {
        ::close(m_fd);
    }
}

TestSocket::TestSocket(TestSocket&& other) noexcept
    : m_fd(std::exchange(other.m_fd, -1)), m_unread(std::move(other.m_unread)) {}

TestSocket& TestSocket::operator=(TestSocket&& other) noexcept {
    std::swap(m_fd, other.m_fd);
    std::swap(m_unread, other.m_unread);
    return *this;
}

TestSocket TestSocket::listenOn(const char* address, int backlog, int port) {
    TestSocket socket = bound(address, port);
    checked(::listen(socket.fd(), backlog), "listen");
    return socket;
}

TestSocket TestSocket::bound(const char* address, int port) {
    sockaddr_in6 name6{};
    name6.sin6_family = AF_INET6;
    name6.sin6_port = htons(static_cast<in_port_t>(port));
    sockaddr_in name{};
    name.sin_family = AF_INET;
    name.sin_port = htons(static_cast<in_port_t>(port));
    const bool isIpv6 = ::inet_pton(AF_INET6, address, &name6.sin6_addr) == 1;
    if (!isIpv6 && ::inet_pton(AF_INET, address, &name.sin_addr) != 1) {
        throw std::invalid_argument(std::string("no address: ") + address);
    }
    TestSocket socket(checked(::socket(isIpv6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0),
                              "socket of a test peer"));
    checked(isIpv6 ? ::bind(socket.fd(), reinterpret_cast<sockaddr*>(&name6), sizeof name6)
                   : ::bind(socket.fd(), reinterpret_cast<sockaddr*>(&name), sizeof name),
            address);
    return socket;
}

TestSocket TestSocket::connectedTo(int port, const std::string& host) {
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), std::to_string(port).c_str(), nullptr, &found) != 0) {
        throw std::invalid_argument("no host: " + host);
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> addresses(found, &::freeaddrinfo);
    for (const addrinfo* address = found; address; address = address->ai_next) {
        TestSocket socket(
            checked(::socket(address->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0), "socket"));
        if (::connect(socket.fd(), address->ai_addr, address->ai_addrlen) == 0) {
            return socket;
        }
    }
    throw std::system_error(errno, std::generic_category(), "connect to the server behind a peer");
}

TestSocket TestSocket::accept() const {
    TestSocket socket(checked(::accept4(m_fd, nullptr, nullptr, SOCK_CLOEXEC), "accept"));
    const int atOnce = 1;
    ::setsockopt(socket.fd(), IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof atOnce);
    return socket;
}

int TestSocket::port() const {
    // The port stands at the same place in both families' addresses.
    sockaddr_in6 address{};
    socklen_t size = sizeof address;
    checked(::getsockname(m_fd, reinterpret_cast<sockaddr*>(&address), &size), "getsockname");
    return ntohs(address.sin6_port);
}

int TestSocket::peerPort() const {
    sockaddr_in6 address{};
    socklen_t size = sizeof address;
    checked(::getpeername(m_fd, reinterpret_cast<sockaddr*>(&address), &size), "getpeername");
    return ntohs(address.sin6_port);
}

QByteArray TestSocket::read() {
    if (!m_unread.isEmpty()) {
        return std::exchange(m_unread, QByteArray());
    }
    std::array<char, 65536> buffer;
    const ssize_t count = ::recv(m_fd, buffer.data(), buffer.size(), 0);
    return count > 0 ? QByteArray(buffer.data(), static_cast<int>(count)) : QByteArray();
}

QList<QByteArray> TestSocket::readCommand() {
    for (QByteArray buffer = std::exchange(m_unread, QByteArray());;) {
        if (auto command = takeCommand(buffer)) {
            m_unread = buffer;
            return *command;
        }
        const QByteArray more = read();
        if (more.isEmpty()) {
            return {};
        }
        buffer += more;
    }
}

bool TestSocket::write(const QByteArray& bytes) {
    for (int sent = 0; sent < bytes.size();) {
        const ssize_t count = ::send(m_fd, bytes.constData() + sent,
                                     static_cast<std::size_t>(bytes.size() - sent), MSG_NOSIGNAL);
        if (count < 0) {
            return false;
        }
        sent += static_cast<int>(count);
    }
    return true;
}

bool TestSocket::waitForClosing(std::chrono::milliseconds timeout) {
    const auto deadline = std::chrono::steady_clock::now() + timeout;
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
        pollfd watched{.fd = m_fd, .events = POLLIN, .revents = 0};
        if (left.count() <= 0 || ::poll(&watched, 1, static_cast<int>(left.count())) == 0) {
            return false;
        }
        if (read().isEmpty()) {
            return true;
        }
    }
}

void TestSocket::waitForClosing() {
    while (!read().isEmpty()) {
    }
}

void TestSocket::holdWithoutReading() {
    pollfd watched{.fd = m_fd, .events = 0, .revents = 0};
    ::poll(&watched, 1, -1);
}

void TestSocket::endWriting() {
    ::shutdown(m_fd, SHUT_WR);
}

void TestSocket::stop() {
    ::shutdown(m_fd, SHUT_RDWR);
}

void TestSocket::reset() {
    // Linux takes the address of no family for the wish to be connected no longer.
    const sockaddr none{.sa_family = AF_UNSPEC, .sa_data = {}};
    ::connect(m_fd, &none, sizeof none);
}

} // namespace test_support
