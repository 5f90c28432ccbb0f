#include "tests/redisclient/fault_proxy.h"

#include <poll.h>

#include <array>
#include <system_error>

namespace testing_support {

namespace {

/// False when one of the two is at its end, or the budget (negative is none) is spent.
bool forward(TestSocket& from, TestSocket& to, std::atomic<int>& budget, bool cutWhenSpent) {
    const QByteArray bytes = from.read();
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

FaultProxy::FaultProxy(int serverPort)
    : m_serverPort(serverPort), m_peer([this](TestSocket& client, int) { relay(client); }) {}

void FaultProxy::relay(TestSocket& client) {
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
        if (watched[0].revents != 0 && !forward(client, server, m_requestBytes, true)) {
            return;
        }
        if (watched[1].revents != 0 && !forward(server, client, m_replyBytes, false)) {
            return;
        }
    }
}

} // namespace testing_support
