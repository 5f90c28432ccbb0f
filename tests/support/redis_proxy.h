#pragma once

#include "tests/support/fake_peer.h"

#include <QByteArray>
#include <QList>

#include <atomic>
#include <map>
#include <mutex>
#include <vector>

namespace test_support {

/// Stands between the code under test and a real server on the loopback address: writes down what
/// goes through to the server, and breaks connections on demand.
///
/// A command is written down before the server gets it: once its answer is there, so is its record.
/// Each break happens once; connections made afterwards are whole again.
class RedisProxy {
public:
    explicit RedisProxy(int serverPort);

    int port() const { return m_peer.port(); }
    int connections() const { return m_peer.connections(); }

    /// The commands of a connection (counted from 1) since the last forget(), each as its parts.
    std::vector<QList<QByteArray>> sentOver(int connection) const;
    /// Those of all connections, one connection after the other.
    std::vector<QList<QByteArray>> sent() const;
    void forget();

    /// Closes both sides after that many more bytes from the client went to the server.
    void cutAfterRequestBytes(int bytes) { m_requestBytes = bytes; }
    /// Closes both sides after that many more bytes from the server went to the client, when the
    /// server sends the next one.
    void cutAfterReplyBytes(int bytes) { m_replyBytes = bytes; }

private:
    void relay(TestSocket& client, int number);
    bool forwardRequest(TestSocket& client, TestSocket& server, int number);

    static constexpr int whole = -1;
    int m_serverPort;
    std::atomic<int> m_requestBytes = whole;
    std::atomic<int> m_replyBytes = whole;
    mutable std::mutex m_mutex;
    std::map<int, QByteArray> m_recorded;
    FakePeer m_peer; // destroyed first, for its threads use the rest
};

} // namespace test_support
