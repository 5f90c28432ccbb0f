#pragma once

#include <QString>

#include <chrono>
#include <memory>

struct addrinfo;

namespace RedisClient {

using Clock = std::chrono::steady_clock;

/// A socket that is closed with its owner; -1 is none.
class TcpSocket {
public:
    /// How long a connected one lets a receiving call wait.
    static constexpr std::chrono::milliseconds patience{100};

    TcpSocket() = default;
    explicit TcpSocket(int fd) : m_fd(fd) {}
    ~TcpSocket();
    TcpSocket(TcpSocket&& other) noexcept;
    TcpSocket& operator=(TcpSocket&& other) noexcept;
    TcpSocket(const TcpSocket&) = delete;
    TcpSocket& operator=(const TcpSocket&) = delete;

    int fd() const { return m_fd; }

private:
    int m_fd = -1;
};

struct AddressListDeleter {
    void operator()(addrinfo* list) const noexcept;
};
using AddressList = std::unique_ptr<addrinfo, AddressListDeleter>;

/// The addresses of a host, with the port; at least one. Takes as long as the system's resolver
/// does. Throws std::runtime_error with the cause.
AddressList resolve(const QString& host, int port);

/// A connected socket that blocks, receiving for TcpSocket::patience at the longest, sends without
/// delay, probes an idle peer and is closed in a child process that runs another program. Every
/// address is tried in turn, each with an equal share of the time left. Throws std::runtime_error
/// with the cause.
TcpSocket connectTcp(const AddressList& addresses, Clock::time_point deadline);

enum class Readiness { ready, timedOut, failed };

/// Waits for `events` of poll(). Once the deadline has passed it is timedOut, ready or not, so that
/// a peer that trickles cannot keep the caller beyond it. On failed, errno has the cause.
Readiness waitUntilReady(int fd, short events, Clock::time_point deadline) noexcept;

} // namespace RedisClient
