#pragma once

#include "tests/support/test_socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <vector>

namespace test_support {

/// Its queue is full, so that the system answers nobody who knocks: a black hole.
class FullListener {
public:
    explicit FullListener(const char* address = "127.0.0.1", int port = 0)
        : m_listener(TestSocket::listenOn(address, 0, port)) {
        sockaddr_in name{};
        name.sin_family = AF_INET;
        name.sin_port = htons(static_cast<in_port_t>(this->port()));
        ::inet_pton(AF_INET, address, &name.sin_addr);
        for (int i = 0; i < 3; ++i) {
            m_queue.emplace_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
            ::connect(m_queue.back().fd(), reinterpret_cast<sockaddr*>(&name), sizeof name);
        }
    }

    int port() const { return m_listener.port(); }

private:
    TestSocket m_listener;
    std::vector<TestSocket> m_queue;
};

} // namespace test_support
