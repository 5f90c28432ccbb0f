#include "tests/support/fake_peer.h"

#include <sys/socket.h>

#include <system_error>
#include <utility>

namespace test_support {

FakePeer::FakePeer(Script script, const char* address)
    : m_script(std::move(script)), m_listener(TestSocket::listenOn(address, SOMAXCONN)),
      m_port(m_listener.port()), m_acceptor([this] { acceptAll(); }) {}

FakePeer::~FakePeer() {
    {
        const std::lock_guard lock(m_mutex);
        m_stopped = true;
        for (Conversation& conversation : m_conversations) {
            conversation.socket.stop();
        }
    }
    // Ends accept().
    m_listener.stop();
    m_acceptor.join();
}

int FakePeer::connections() const {
    const std::lock_guard lock(m_mutex);
    return static_cast<int>(m_conversations.size());
}

void FakePeer::endConnections() {
    const std::lock_guard lock(m_mutex);
    for (Conversation& conversation : m_conversations) {
        conversation.socket.stop();
    }
}

void FakePeer::resetConnections() {
    const std::lock_guard lock(m_mutex);
    for (Conversation& conversation : m_conversations) {
        conversation.socket.reset();
    }
}

void FakePeer::acceptAll() {
    for (int number = 1;; ++number) {
        TestSocket socket;
        try {
            socket = m_listener.accept();
        } catch (const std::system_error&) {
            return; // stopped
        }
        const std::lock_guard lock(m_mutex);
        if (m_stopped) {
            return;
        }
        Conversation& conversation = m_conversations.emplace_back(std::move(socket));
        conversation.thread = std::jthread([this, &conversation, number] {
            m_script(conversation.socket, number);
            const std::lock_guard closing(m_mutex);
            conversation.socket = TestSocket();
        });
    }
}

QList<QByteArray> FakePeer::afterPing(TestSocket& client) {
    for (;;) {
        const QList<QByteArray> command = client.readCommand();
        if (command.isEmpty() || command.first() != "PING") {
            return command;
        }
        client.write("+PONG\r\n");
    }
}

FakePeer::Script FakePeer::answering(const QByteArray& answer) {
    return [answer](TestSocket& client, int) {
        while (!afterPing(client).isEmpty()) {
            client.write(answer);
        }
    };
}

} // namespace test_support
