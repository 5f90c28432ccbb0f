#include "tests/support/wire_proxy.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <system_error>

namespace test_support {

Exchange::Exchange(WireProxy& proxy, TestSocket& client, int clientPort, TestSocket& server,
                   QByteArray request)
    : m_proxy(proxy), m_client(client), m_clientPort(clientPort), m_server(server),
      m_request(std::move(request)) {}

void Exchange::forward(int size) {
    m_server.write(m_request.mid(m_forwarded, size));
    m_forwarded = std::min(m_forwarded + size, m_request.size());
}

QByteArray Exchange::answer() {
    forward(m_request.size() - m_forwarded);
    QByteArray answer = m_proxy.take(m_server, m_client, m_proxy.m_framing.answerSize);
    m_isOver = answer.isEmpty();
    return answer;
}

void Exchange::reply(const QByteArray& bytes) {
    const int allowed = m_proxy.allowed(bytes.size());
    m_isOver = !m_client.write(bytes.left(allowed)) || allowed < bytes.size() || m_isOver;
}

void Exchange::close() {
    m_isOver = true;
}

void Exchange::reset() {
    m_client.reset();
    m_isOver = true;
}

void Exchange::stall() {
    m_proxy.setStalling(m_clientPort, true);
    m_client.waitForClosing();
    m_proxy.setStalling(m_clientPort, false);
    m_isOver = true;
}

WireProxy::WireProxy(const WireFraming& framing, std::string serverHost, int serverPort)
    : m_framing(framing), m_serverHost(std::move(serverHost)), m_serverPort(serverPort),
      m_peer([this](TestSocket& client, int number) { relay(client, number); }) {}

std::vector<QByteArray> WireProxy::bytesOver(int connection) const {
    const std::lock_guard lock(m_mutex);
    const auto requests = m_recorded.find(connection);
    return requests == m_recorded.end() ? std::vector<QByteArray>() : requests->second;
}

void WireProxy::forget() {
    const std::lock_guard lock(m_mutex);
    m_recorded.clear();
}

void WireProxy::breakAt(QByteArray name, Fault fault, int times) {
    const std::lock_guard lock(m_mutex);
    m_faultName = std::move(name);
    m_fault = std::move(fault);
    m_faultTimes = times;
}

void WireProxy::closeAfter(int bytes) {
    const std::lock_guard lock(m_mutex);
    m_closeAt = m_bytesPassed + bytes;
}

bool WireProxy::isStalling(int clientPort) const {
    const std::lock_guard lock(m_mutex);
    return m_stalling.contains(clientPort);
}

void WireProxy::relay(TestSocket& client, int number) {
    TestSocket server;
    int clientPort = 0;
    try {
        clientPort = client.peerPort();
        server = TestSocket::connectedTo(m_serverPort, m_serverHost);
    } catch (const std::system_error&) {
        return; // one of the two is not there
    }
    for (;;) {
        const QByteArray request = take(client, server, m_framing.requestSize);
        if (request.isEmpty()) {
            return;
        }
        {
            const std::lock_guard lock(m_mutex);
            m_recorded[number].push_back(request);
        }
        Exchange exchange(*this, client, clientPort, server, request);
        if (const Fault fault = faultFor(m_framing.nameOf(request))) {
            fault(exchange);
        } else {
            exchange.reply(exchange.answer());
        }
        if (exchange.isOver()) {
            return;
        }
    }
}

WireProxy::Fault WireProxy::faultFor(const QByteArray& name) {
    const std::lock_guard lock(m_mutex);
    if (m_faultTimes == 0 || (!m_faultName.isEmpty() && m_faultName != name)) {
        return nullptr;
    }
    m_faultTimes -= m_faultTimes > 0 ? 1 : 0;
    return m_fault;
}

QByteArray WireProxy::take(TestSocket& from, TestSocket& other, int (*sizeOf)(const QByteArray&)) {
    QByteArray bytes;
    while (sizeOf(bytes) == 0) {
        std::array watched{pollfd{.fd = from.fd(), .events = POLLIN, .revents = 0},
                           pollfd{.fd = other.fd(), .events = POLLRDHUP, .revents = 0}};
        const bool isThere = from.hasUnread() || ::poll(watched.data(), watched.size(), -1) > 0;
        const QByteArray more = isThere && watched[1].revents == 0 ? from.read() : QByteArray();
        if (more.isEmpty()) {
            return {};
        }
        bytes += more;
        // What the server says is counted when it goes on.
        if (sizeOf == m_framing.requestSize) {
            if (const int allowedBytes = allowed(more.size()); allowedBytes < more.size()) {
                other.write(bytes.chopped(more.size() - allowedBytes));
                from.endWriting(); // so that the rest of what it writes finds a broken pipe
                return {};
            }
        }
    }
    from.unread(bytes.mid(sizeOf(bytes)));
    return bytes.left(sizeOf(bytes));
}

int WireProxy::allowed(int bytes) {
    const std::lock_guard lock(m_mutex);
    const int left = m_closeAt - m_bytesPassed;
    m_bytesPassed += bytes;
    if (m_closeAt < 0 || bytes <= left) {
        return bytes;
    }
    m_closeAt = always;
    return left;
}

void WireProxy::setStalling(int clientPort, bool stalls) {
    const std::lock_guard lock(m_mutex);
    if (stalls) {
        m_stalling.insert(clientPort);
    } else {
        m_stalling.erase(clientPort);
    }
}

} // namespace test_support
