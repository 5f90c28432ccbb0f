#pragma once

#include <QByteArray>
#include <QList>

#include <chrono>
#include <optional>
#include <string>

namespace test_support {

/// Takes the first Redis command out of these bytes, as its parts; nothing while it is incomplete.
std::optional<QList<QByteArray>> takeCommand(QByteArray& bytes);

/// A blocking socket as a test peer needs it. Throws std::system_error, except for what a peer has
/// to expect: reading gives nothing at the end, writing is false once the other side is gone.
class TestSocket {
public:
    TestSocket() = default;
    explicit TestSocket(int fd) : m_fd(fd) {}
    ~TestSocket();
    TestSocket(TestSocket&& other) noexcept;
    TestSocket& operator=(TestSocket&& other) noexcept;

    /// Listens on this port (0 is a free one) of this IPv4 or IPv6 address, which must be one of
    /// this machine.
    static TestSocket listenOn(const char* address, int backlog, int port = 0);
    /// A port of 127.0.0.1 that nobody listens on.
    static int unusedPort() { return bound("127.0.0.1", 0).port(); }
    /// Has the port and does not listen, so that whoever connects to it is refused.
    static TestSocket bound(const char* address = "127.0.0.1", int port = 0);
    static TestSocket connectedTo(int port, const std::string& host = "127.0.0.1");

    TestSocket accept() const;
    int port() const;
    int peerPort() const;
    int fd() const { return m_fd; }

    /// What has come, at least one byte; empty at the end.
    QByteArray read();
    /// Gives back what was read too much.
    void unread(const QByteArray& bytes) { m_unread = bytes; }
    bool hasUnread() const { return !m_unread.isEmpty(); }
    /// One whole command; empty at the end.
    QList<QByteArray> readCommand();
    bool write(const QByteArray& bytes);
    /// False when the other side did not close within that time. What comes meanwhile is discarded.
    bool waitForClosing(std::chrono::milliseconds timeout);
    /// Until the other side closes, or the owner of the peer stops it.
    void waitForClosing();
    /// Until the owner of the peer stops it; what comes meanwhile fills the system's buffers.
    void holdWithoutReading();
    /// Says that nothing more comes; reading goes on.
    void endWriting();
    void stop();
    /// Ends the connection as a system does that knows nothing of it.
    void reset();

private:
    int m_fd = -1;
    QByteArray m_unread;
};

} // namespace test_support
