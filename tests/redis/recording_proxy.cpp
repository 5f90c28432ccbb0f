#include "tests/redis/recording_proxy.h"

#include <poll.h>

#include <array>
#include <stdexcept>
#include <system_error>

namespace testing_support {

namespace {

// Takes one line off the front: a letter and a number.
int takeHeader(QByteArray& bytes, char letter) {
    const int end = bytes.indexOf("\r\n");
    if (end < 0 || bytes.at(0) != letter) {
        throw std::runtime_error("no whole Redis command: " + bytes.toStdString());
    }
    const int number = bytes.mid(1, end - 1).toInt();
    bytes.remove(0, end + 2);
    return number;
}

std::vector<QList<QByteArray>> commandsIn(QByteArray bytes) {
    std::vector<QList<QByteArray>> commands;
    while (!bytes.isEmpty()) {
        QList<QByteArray>& parts = commands.emplace_back();
        for (int left = takeHeader(bytes, '*'); left > 0; --left) {
            const int size = takeHeader(bytes, '$');
            parts.append(bytes.left(size));
            bytes.remove(0, size + 2);
        }
    }
    return commands;
}

} // namespace

RecordingProxy::RecordingProxy(int serverPort)
    : m_serverPort(serverPort),
      m_peer([this](TestSocket& client, int number) { relay(client, number); }) {}

std::vector<QList<QByteArray>> RecordingProxy::sentOver(int connection) const {
    const std::lock_guard lock(m_mutex);
    const auto bytes = m_bytes.find(connection);
    return commandsIn(bytes == m_bytes.end() ? QByteArray() : bytes->second);
}

std::vector<QList<QByteArray>> RecordingProxy::sent() const {
    std::vector<QList<QByteArray>> all;
    for (int connection = 1; connection <= connections(); ++connection) {
        const auto commands = sentOver(connection);
        all.insert(all.end(), commands.begin(), commands.end());
    }
    return all;
}

void RecordingProxy::forget() {
    const std::lock_guard lock(m_mutex);
    m_bytes.clear();
}

void RecordingProxy::relay(TestSocket& client, int number) {
    TestSocket server;
    try {
        server = TestSocket::connectedTo(m_serverPort);
    } catch (const std::system_error&) {
        return; // no server, no connection
    }
    for (;;) {
        std::array watched{pollfd{.fd = client.fd(), .events = POLLIN, .revents = 0},
                           pollfd{.fd = server.fd(), .events = POLLIN, .revents = 0}};
        if (::poll(watched.data(), watched.size(), -1) < 0) {
            return;
        }
        if (watched[0].revents != 0) {
            const QByteArray bytes = client.read();
            record(number, bytes);
            if (bytes.isEmpty() || !server.write(bytes)) {
                return;
            }
        }
        if (watched[1].revents != 0) {
            const QByteArray bytes = server.read();
            if (bytes.isEmpty() || !client.write(bytes)) {
                return;
            }
        }
    }
}

void RecordingProxy::record(int number, const QByteArray& bytes) {
    const std::lock_guard lock(m_mutex);
    m_bytes[number] += bytes;
}

} // namespace testing_support
