#include "tests/support/redis_proxy.h"

#include <poll.h>

#include <array>
#include <stdexcept>
#include <system_error>

namespace test_support {

namespace {

std::vector<QList<QByteArray>> commandsIn(QByteArray bytes) {
    std::vector<QList<QByteArray>> commands;
    while (auto command = takeCommand(bytes)) {
        commands.push_back(*std::move(command));
    }
    if (!bytes.isEmpty()) {
        throw std::runtime_error("no whole Redis command: " + bytes.toStdString());
    }
    return commands;
}

/// False when one of the two is at its end, or the budget (negative is none) is spent.
bool forward(const QByteArray& bytes, TestSocket& to, std::atomic<int>& budget, bool cutWhenSpent) {
    if (bytes.isEmpty()) {
        return false;
    }
    const int allowed = budget;
    if (allowed < 0) {
        return to.write(bytes);
    }
    if (bytes.size() > allowed || (cutWhenSpent && bytes.size() == allowed)) {
        budget = -1;
        to.write(bytes.left(allowed));
        return false;
    }
    budget = allowed - bytes.size();
    return to.write(bytes);
}

} // namespace

RedisProxy::RedisProxy(int serverPort)
    : m_serverPort(serverPort),
      m_peer([this](TestSocket& client, int number) { relay(client, number); }) {}

std::vector<QList<QByteArray>> RedisProxy::sentOver(int connection) const {
    const std::lock_guard lock(m_mutex);
    const auto bytes = m_recorded.find(connection);
    return commandsIn(bytes == m_recorded.end() ? QByteArray() : bytes->second);
}

std::vector<QList<QByteArray>> RedisProxy::sent() const {
    std::vector<QList<QByteArray>> all;
    for (int connection = 1; connection <= connections(); ++connection) {
        const auto commands = sentOver(connection);
        all.insert(all.end(), commands.begin(), commands.end());
    }
    return all;
}

void RedisProxy::forget() {
    const std::lock_guard lock(m_mutex);
    m_recorded.clear();
}

void RedisProxy::relay(TestSocket& client, int number) {
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
        if (watched[0].revents != 0 && !forwardRequest(client, server, number)) {
            return;
        }
        if (watched[1].revents != 0 && !forward(server.read(), client, m_replyBytes, false)) {
            return;
        }
    }
}

bool RedisProxy::forwardRequest(TestSocket& client, TestSocket& server, int number) {
    const QByteArray bytes = client.read();
    {
        const std::lock_guard lock(m_mutex);
        m_recorded[number] += bytes;
    }
    return forward(bytes, server, m_requestBytes, true);
}

} // namespace test_support
