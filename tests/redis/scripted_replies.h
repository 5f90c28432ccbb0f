#pragma once

#include "tests/support/fake_peer.h"

#include <QByteArray>
#include <QList>

#include <mutex>
#include <vector>

namespace test_support {

/// Answers that a real server gives rarely or never, in this order, after which it answers nil; it
/// writes the commands down. Only PING and SELECT are answered as by a server.
class ScriptedReplies {
public:
    explicit ScriptedReplies(QList<QByteArray> replies)
        : m_replies(std::move(replies)), m_peer([this](TestSocket& client, int) { talk(client); }) {
    }

    int port() const { return m_peer.port(); }

    std::vector<QList<QByteArray>> commands() const {
        const std::lock_guard lock(m_mutex);
        return m_commands;
    }

    /// The wire's form of an array of these replies, and of a bulk string.
    static QByteArray array(const QList<QByteArray>& elements) {
        return '*' + QByteArray::number(elements.size()) + "\r\n" + elements.join();
    }
    static QByteArray bulk(const QByteArray& bytes) {
        return '$' + QByteArray::number(bytes.size()) + "\r\n" + bytes + "\r\n";
    }
    static QByteArray bulks(const QList<QByteArray>& elements) {
        QList<QByteArray> encoded;
        for (const QByteArray& element : elements) {
            encoded.append(bulk(element));
        }
        return array(encoded);
    }

private:
    void talk(TestSocket& client) {
        for (;;) {
            const QList<QByteArray> command = FakePeer::afterPing(client);
            if (command.isEmpty()) {
                return;
            }
            client.write(command.first() == "SELECT" ? QByteArray("+OK\r\n") : next(command));
        }
    }

    QByteArray next(const QList<QByteArray>& command) {
        const std::lock_guard lock(m_mutex);
        m_commands.push_back(command);
        return m_replies.isEmpty() ? QByteArray("$-1\r\n") : m_replies.takeFirst();
    }

    mutable std::mutex m_mutex;
    QList<QByteArray> m_replies;
    std::vector<QList<QByteArray>> m_commands;
    FakePeer m_peer; // destroyed first, for its threads use the rest
};

} // namespace test_support
