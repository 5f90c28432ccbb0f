#include "tests/support/mongo_proxy.h"

#include "tests/support/mongo_database.h"

#include <bson/bson.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace test_support {

namespace {

constexpr std::size_t headerSize = 16;
constexpr std::int32_t opMsg = 2013;

[[noreturn]] void fail(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

std::int32_t int32At(const std::string& bytes, std::size_t offset) {
    std::int32_t value = 0;
    if (offset + sizeof value > bytes.size()) {
        throw std::runtime_error("a message of MongoDB's protocol is cut off");
    }
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return static_cast<std::int32_t>(BSON_UINT32_FROM_LE(static_cast<std::uint32_t>(value)));
}

bool receive(int socket, std::string& bytes, std::size_t size) {
    while (bytes.size() < size) {
        char buffer[16384];
        const auto wanted = std::min(sizeof buffer, size - bytes.size());
        const auto count = ::recv(socket, buffer, wanted, 0);
        if (count <= 0) {
            return false;
        }
        bytes.append(buffer, static_cast<std::size_t>(count));
    }
    return true;
}

/// One whole message; empty at the end.
std::string receiveMessage(int socket) {
    std::string message;
    if (!receive(socket, message, headerSize) ||
        !receive(socket, message, static_cast<std::size_t>(int32At(message, 0)))) {
        return {};
    }
    return message;
}

bool sendMessage(int socket, std::string_view message) {
    while (!message.empty()) {
        const auto count = ::send(socket, message.data(), message.size(), MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        message.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// Beginning and end of the host and its port in a connection string.
std::pair<std::size_t, std::size_t> hostIn(const std::string& url) {
    std::size_t begin = url.find("://") + 3;
    const std::size_t end = std::min(url.find_first_of("/?", begin), url.size());
    if (const auto at = url.rfind('@', end); at != std::string::npos && at >= begin) {
        begin = at + 1;
    }
    return {begin, end};
}

int connectToServer() {
    const std::string url = mongoUrl();
    const auto [begin, end] = hostIn(url);
    const std::string address = url.substr(begin, end - begin);
    const std::size_t colon = address.rfind(':');
    const std::string host = address.substr(0, colon);
    const std::string port = colon == std::string::npos ? "27017" : address.substr(colon + 1);
    addrinfo* found = nullptr;
    if (::getaddrinfo(host.c_str(), port.c_str(), nullptr, &found) != 0) {
        throw std::runtime_error("cannot find " + address);
    }
    const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> addresses{found, &::freeaddrinfo};
    for (const addrinfo* each = found; each != nullptr; each = each->ai_next) {
        const int socket = ::socket(each->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
        if (socket >= 0 && ::connect(socket, each->ai_addr, each->ai_addrlen) == 0) {
            return socket;
        }
        ::close(socket);
    }
    fail("connect to the MongoDB server");
}

/// The command of a message as one document: the lists of documents that the protocol sends beside
/// it stand in it as arrays, as its commands are written.
bsoncxx::v1::document::value commandIn(const std::string& message) {
    std::size_t offset = headerSize + 4; // flags
    bson_t command = BSON_INITIALIZER;
    const auto documentAt = [&](std::size_t at) {
        bson_t document;
        if (!bson_init_static(&document, reinterpret_cast<const std::uint8_t*>(message.data()) + at,
                              static_cast<std::size_t>(int32At(message, at)))) {
            throw std::runtime_error("a request holds no BSON");
        }
        return document;
    };
    while (offset < message.size()) {
        const char kind = message[offset++];
        const auto size = static_cast<std::size_t>(int32At(message, offset));
        if (kind == 0) {
            const bson_t body = documentAt(offset);
            bson_concat(&command, &body);
        } else {
            const std::string name = message.data() + offset + 4;
            bson_array_builder_t* array = nullptr;
            bson_append_array_builder_begin(&command, name.c_str(), -1, &array);
            for (std::size_t at = offset + 4 + name.size() + 1; at < offset + size;) {
                const bson_t document = documentAt(at);
                bson_array_builder_append_document(array, &document);
                at += document.len;
            }
            bson_append_array_builder_end(&command, array);
        }
        offset += size;
    }
    bsoncxx::v1::document::value whole{
        bsoncxx::v1::document::view{bson_get_data(&command), command.len}};
    bson_destroy(&command);
    return whole;
}

} // namespace

mongo_proxy::mongo_proxy() : m_listener(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (m_listener < 0 ||
        ::bind(m_listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(m_listener, 8) != 0) {
        fail("listen on the loopback address");
    }
    m_accepting = std::jthread{[this] { acceptAll(); }};
}

mongo_proxy::~mongo_proxy() {
    {
        const std::lock_guard lock{m_mutex};
        m_stopped = true;
        for (const int socket : m_sockets) {
            ::shutdown(socket, SHUT_RDWR);
        }
    }
    ::shutdown(m_listener, SHUT_RDWR);
    m_accepting.join();
    m_relays.clear();
    for (const int socket : m_sockets) {
        ::close(socket);
    }
    ::close(m_listener);
}

std::string mongo_proxy::url() const {
    sockaddr_in address{};
    socklen_t size = sizeof address;
    if (::getsockname(m_listener, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        fail("getsockname");
    }
    std::string url = mongoUrlWith("directConnection=true");
    const auto [begin, end] = hostIn(url);
    return url.replace(begin, end - begin, "127.0.0.1:" + std::to_string(ntohs(address.sin_port)));
}

std::vector<sent_command> mongo_proxy::sent() const {
    const std::lock_guard lock{m_mutex};
    return m_sent;
}

sent_command mongo_proxy::onlySent() const {
    const auto all = sent();
    if (all.size() != 1) {
        throw std::runtime_error(std::to_string(all.size()) + " requests were sent");
    }
    return all.front();
}

void mongo_proxy::forget() {
    const std::lock_guard lock{m_mutex};
    m_sent.clear();
}

void mongo_proxy::damageAnswers(std::string text, std::string damage) {
    const std::lock_guard lock{m_mutex};
    m_text = std::move(text);
    m_damage = std::move(damage);
}

void mongo_proxy::stayMute() {
    m_mute = true;
}

void mongo_proxy::acceptAll() {
    for (;;) {
        const int client = ::accept4(m_listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (client < 0) {
            return;
        }
        const int server = connectToServer();
        const std::lock_guard lock{m_mutex};
        m_sockets.insert(m_sockets.end(), {client, server});
        if (m_stopped) {
            return;
        }
        m_relays.emplace_back([this, client, server] { relay(client, server); });
    }
}

void mongo_proxy::relay(int client, int server) {
    for (;;) {
        const std::string request = receiveMessage(client);
        if (request.empty()) {
            break;
        }
        record(request);
        if (m_mute) {
            continue;
        }
        if (!sendMessage(server, request)) {
            break;
        }
        const std::string answer = receiveMessage(server);
        if (answer.empty() || !sendMessage(client, answered(answer))) {
            break;
        }
    }
    ::shutdown(client, SHUT_RDWR);
    ::shutdown(server, SHUT_RDWR);
}

void mongo_proxy::record(const std::string& message) {
    if (int32At(message, 12) != opMsg) {
        return; // the driver's first greeting
    }
    auto command = commandIn(message);
    const auto name = std::string{command.begin()->key()};
    if (name != "hello" && name != "isMaster" && name != "ismaster" && name != "ping" &&
        name != "endSessions") {
        const std::lock_guard lock{m_mutex};
        m_sent.push_back({name, std::move(command)});
    }
}

std::string mongo_proxy::answered(std::string message) const {
    const std::lock_guard lock{m_mutex};
    if (!m_text.empty()) {
        for (auto at = message.find(m_text); at != std::string::npos;
             at = message.find(m_text, at)) {
            message.replace(at, m_text.size(), m_damage);
            at += m_damage.size();
        }
    }
    return message;
}

} // namespace test_support
