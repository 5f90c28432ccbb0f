#pragma once

#include "tests/redisclient/fake_peer.h"

#include <atomic>

namespace testing_support {

/// Stands between client and server on the loopback address and breaks connections on demand. Each
/// break happens once; connections made afterwards are whole again.
class FaultProxy {
public:
    explicit FaultProxy(int serverPort);

    int port() const { return m_peer.port(); }
    int connections() const { return m_peer.connections(); }

    /// Closes both sides after that many more bytes from the client went to the server.
    void cutAfterRequestBytes(int bytes) { m_requestBytes = bytes; }
    /// Closes both sides after that many more bytes from the server went to the client, when the
    /// server sends the next one.
    void cutAfterReplyBytes(int bytes) { m_replyBytes = bytes; }

private:
    void relay(TestSocket& client);

    static constexpr int whole = -1;
    int m_serverPort;
    std::atomic<int> m_requestBytes = whole;
    std::atomic<int> m_replyBytes = whole;
    FakePeer m_peer;
};

} // namespace testing_support
