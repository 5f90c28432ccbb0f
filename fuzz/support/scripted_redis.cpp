#include "fuzz/support/scripted_redis.h"

#include <dlfcn.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace fuzz {

namespace {

ScriptedRedis* server = nullptr;

int checked(int result) {
    if (result < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    return result;
}

} // namespace

ScriptedRedis::ScriptedRedis()
    : m_listener(checked(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0))) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    checked(::bind(m_listener, reinterpret_cast<const sockaddr*>(&address), size));
    checked(::listen(m_listener, 8));
    checked(::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size));
    m_port = ntohs(address.sin_port);
    server = this;
}

ScriptedRedis::~ScriptedRedis() {
    server = nullptr;
    close();
    ::close(m_listener);
}

void ScriptedRedis::play(std::string_view script) {
    close();
    m_script = script;
}

void ScriptedRedis::sendPiece() {
    acceptLatest();
    if (m_client < 0) {
        return;
    }
    const std::string_view piece = m_script.substr(0, m_script.find('\xFF'));
    m_script.remove_prefix(std::min(m_script.size(), piece.size() + 1));
    if (piece.empty() || ::send(m_client, piece.data(), piece.size(), MSG_NOSIGNAL) < 0) {
        close();
    }
}

void ScriptedRedis::acceptLatest() {
    for (int next = 0; next >= 0;) {
        next = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
        if (next >= 0) {
            close();
            m_client = next;
        }
    }
}

/// At once, so that no port is kept.
void ScriptedRedis::close() {
    if (m_client >= 0) {
        const linger now{.l_onoff = 1, .l_linger = 0};
        ::setsockopt(m_client, SOL_SOCKET, SO_LINGER, &now, sizeof now);
        ::close(std::exchange(m_client, -1));
    }
}

} // namespace fuzz

// NOLINTNEXTLINE(readability-inconsistent-declaration-parameter-name): the system's are reserved
extern "C" ssize_t recv(int fd, void* buffer, std::size_t size, int flags) {
    static const auto call = reinterpret_cast<decltype(&::recv)>(::dlsym(RTLD_NEXT, "recv"));
    if (fuzz::server != nullptr) {
        fuzz::server->sendPiece();
    }
    return call(fd, buffer, size, flags);
}
