#pragma once

#include "tests/support/test_socket.h"

#include <QByteArray>
#include <QList>

#include <functional>
#include <list>
#include <mutex>
#include <thread>

namespace test_support {

/// A listener on an address of this machine that plays a part in place of a server. Every
/// connection runs the script in a thread of its own and is closed when the script returns. Being
/// destroyed, the peer ends all connections and waits for their scripts.
class FakePeer {
public:
    /// `number` counts the connections from 1.
    using Script = std::function<void(TestSocket& client, int number)>;

    explicit FakePeer(Script script, const char* address = "127.0.0.1");
    ~FakePeer();
    FakePeer(const FakePeer&) = delete;
    FakePeer& operator=(const FakePeer&) = delete;

    int port() const { return m_port; }
    int connections() const;

    /// Those that there are now. More may come.
    void endConnections();
    void resetConnections();

    /// Answers PING; gives the next other command (empty at the end).
    static QList<QByteArray> afterPing(TestSocket& client);

    /// A script that answers PING, and each other command with those bytes.
    static Script answering(const QByteArray& answer);

private:
    struct Conversation {
        TestSocket socket;
        std::jthread thread;
    };

    void acceptAll();

    Script m_script;
    TestSocket m_listener;
    int m_port;
    mutable std::mutex m_mutex;
    bool m_stopped = false;
    std::list<Conversation> m_conversations;
    std::jthread m_acceptor;
};

} // namespace test_support
