#include "redisclient/session.h"

#include "redisclient/connection_config.h"

#include <QVariant>

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstring>
#include <string_view>
#include <utility>

namespace RedisClient {

namespace {

/// A command's buffer is kept for the next one up to that size.
constexpr std::size_t maxKeptBytes = std::size_t{64} << 10;

bool isError(const Response& response, const char* code) {
    return response.isErrorMessage() && response.errorMessage().split(' ').first() == code;
}

/// The server answers but for the moment does nothing that it is asked, neither reading nor
/// writing. Not so OOM, MISCONF, READONLY and NOREPLICAS, with which it refuses to write and reads
/// on. Or the command is larger than it takes: then it closes the connection behind its answer,
/// which is mostly seen first, for the command is still being sent.
bool doesNotServeNow(const Response& response) {
    static constexpr std::array codes{
        "LOADING",     // reads its data back, after a start or from the server that it copies
        "MASTERDOWN",  // lost the server that it copies, and must not serve what is out of date
        "BUSY",        // runs a script that does not end
        "CLUSTERDOWN", // the cluster does not cover the key, or is down
        "TRYAGAIN",    // the keys are on their way from one server of the cluster to another
    };
    return response.errorMessage().startsWith("ERR Protocol error") ||
           std::ranges::any_of(codes, [&](const char* code) { return isError(response, code); });
}

/// Whoever may not say PING, or cannot have what he writes kept, has a server before him all the
/// same. The other refusals (a password, too many clients, a protected server) mean that there will
/// be no conversation, and any other answer is not that of a Redis server.
bool letsIn(const Response& response) {
    return response.getValue() == QByteArray("PONG") || isError(response, "NOPERM") ||
           isError(response, "MISCONF");
}

std::string refusalText(const Response& response) {
    if (!response.isErrorMessage()) {
        return "the answer is not that of a Redis server";
    }
    // Of a command that it does not know the server repeats the arguments, be it the password.
    const std::string text = response.errorMessage().toStdString();
    return text.substr(0, text.find(", with args "));
}

/// Leaves nothing of a text's bytes in memory.
class Overwriting {
public:
    explicit Overwriting(std::string& text) : m_text(text) {}
    ~Overwriting() { ::explicit_bzero(m_text.data(), m_text.size()); }
    Overwriting(const Overwriting&) = delete;
    Overwriting& operator=(const Overwriting&) = delete;

private:
    std::string& m_text;
};

constexpr std::string_view lineEnd = "\r\n";
/// At the most.
constexpr std::size_t headSize = 16;

/// The line before a command or a part of it: what comes, and how many of it.
void appendHead(std::string& command, char kind, int count) {
    std::array<char, headSize> head{kind};
    char* const end = std::to_chars(head.data() + 1, head.data() + head.size(), count).ptr;
    command.append(head.data(), end).append(lineEnd);
}

} // namespace

Session::Session(const ConnectionConfig& config) {
    const AddressList addresses = resolve(config.host(), config.port());
    const auto deadline = Clock::now() + std::chrono::milliseconds(config.connectTimeoutMsecs());
    m_socket = connectTcp(addresses, deadline);
    introduce(config, deadline);
}

void Session::introduce(const ConnectionConfig& config, Clock::time_point deadline) {
    const auto say = [&](const QList<QByteArray>& parts) {
        try {
            return roundTrip(parts, deadline);
        } catch (const SessionError& error) {
            throw std::runtime_error(parts.first().toStdString() + ": " + error.what());
        }
    };
    if (!config.auth().isEmpty()) {
        // The buffer is kept, and memory that is given back is not cleared.
        const Overwriting afterwards(m_command);
        const Response response = say({"AUTH", config.auth()});
        if (response.getValue() != QByteArray("OK")) {
            throw std::runtime_error("AUTH: " + refusalText(response));
        }
    }
    // Not the password: a server takes that also while it does not serve.
    if (const Response response = say({"PING"}); !letsIn(response)) {
        throw std::runtime_error("PING: " + refusalText(response));
    }
    if (!config.name().isEmpty()) {
        say({"CLIENT", "SETNAME", config.name().toUtf8()});
    }
}

bool Session::isUsable() const noexcept {
    if (m_answers.hasUnread()) {
        return false;
    }
    pollfd watched{.fd = m_socket.fd(), .events = POLLIN, .revents = 0};
    int count = 0;
    do {
        count = ::poll(&watched, 1, 0);
    } while (count < 0 && errno == EINTR);
    return count == 0;
}

Response Session::roundTrip(const QList<QByteArray>& parts, Clock::time_point deadline) {
    if (m_answers.hasUnread()) {
        throw SessionError(SessionError::Kind::notWritten, "the server sent something unasked");
    }
    send(parts, deadline);
    Response response = receive(deadline);
    if (doesNotServeNow(response)) {
        throw SessionError(SessionError::Kind::refused, response.errorMessage().toStdString());
    }
    trackDatabase(parts, response);
    return response;
}

void Session::select(int db, Clock::time_point deadline) {
    if (m_database == db) {
        return;
    }
    const Response response = roundTrip({"SELECT", QByteArray::number(db)}, deadline);
    if (response.isErrorMessage()) {
        throw SessionError(SessionError::Kind::refused,
                           "database " + std::to_string(db) +
                               " cannot be selected: " + response.errorMessage().toStdString());
    }
    if (response.type() != Response::Status) {
        throw SessionError(SessionError::Kind::answerLost, "SELECT got no answer of its kind");
    }
}

void Session::trackDatabase(const QList<QByteArray>& parts, const Response& response) {
    const auto is = [&parts](const char* name) {
        return parts.first().compare(name, Qt::CaseInsensitive) == 0;
    };
    if (is("SELECT")) {
        if (response.isErrorMessage()) {
            return;
        }
        bool isNumber = false;
        const int db = parts.value(1).toInt(&isNumber);
        // Inside a transaction the answer is "QUEUED", and whether it comes to that stays open.
        const bool selected = isNumber && response.getValue() == QByteArray("OK");
        m_database = selected ? std::optional(db) : std::nullopt;
    } else if (is("RESET")) {
        m_database = std::nullopt;
    }
}

void Session::send(const QList<QByteArray>& parts, Clock::time_point deadline) {
    format(parts);
    for (std::size_t sent = 0; sent < m_command.size();) {
        const ssize_t count = ::send(m_socket.fd(), m_command.data() + sent,
                                     m_command.size() - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count >= 0) {
            sent += static_cast<std::size_t>(count);
        } else if (!waitFor(POLLOUT, deadline, "timed out while sending")) {
            throw SessionError(sent == 0 ? SessionError::Kind::notWritten
                                         : SessionError::Kind::answerLost,
                               std::strerror(errno));
        }
    }
    if (m_command.capacity() > maxKeptBytes) {
        m_command = std::string();
    }
}

/// The bytes that are sent, in the buffer that is kept for them.
void Session::format(const QList<QByteArray>& parts) {
    std::size_t size = headSize;
    for (const QByteArray& part : parts) {
        size += headSize + static_cast<std::size_t>(part.size()) + lineEnd.size();
    }
    m_command.clear();
    m_command.reserve(size);
    appendHead(m_command, '*', parts.size());
    for (const QByteArray& part : parts) {
        appendHead(m_command, '$', part.size());
        m_command.append(part.constData(), static_cast<std::size_t>(part.size())).append(lineEnd);
    }
}

Response Session::receive(Clock::time_point deadline) {
    // Nearly always the answer comes soon and all at once, and the socket itself waits for that.
    const bool mayWait = deadline - Clock::now() > 2 * TcpSocket::patience;
    for (int flags = mayWait ? 0 : MSG_DONTWAIT;; flags = MSG_DONTWAIT) {
        const ssize_t count = ::recv(m_socket.fd(), m_received.data(), m_received.size(), flags);
        if (count == 0) {
            throw SessionError(SessionError::Kind::answerLost, "the server closed the connection");
        }
        if (count < 0) {
            if (!waitFor(POLLIN, deadline, "timed out waiting for the answer")) {
                throw SessionError(SessionError::Kind::answerLost, std::strerror(errno));
            }
            continue;
        }
        // A peer that never stops sending must not get past the deadline either.
        if (Clock::now() >= deadline) {
            throw SessionError(SessionError::Kind::timedOut, "timed out reading the answer");
        }
        try {
            if (auto answer =
                    m_answers.read({m_received.data(), static_cast<std::size_t>(count)})) {
                return *std::move(answer);
            }
        } catch (const ReplyError& failure) {
            throw SessionError(SessionError::Kind::answerLost, failure.what());
        }
    }
}

/// After a call that failed. True when it may succeed now; otherwise errno has the cause.
bool Session::waitFor(short events, Clock::time_point deadline, const char* timedOut) const {
    if (errno == EINTR) {
        return true;
    }
    const Readiness readiness =
        errno == EAGAIN ? waitUntilReady(m_socket.fd(), events, deadline) : Readiness::failed;
    if (readiness == Readiness::timedOut) {
        throw SessionError(SessionError::Kind::timedOut, timedOut);
    }
    return readiness == Readiness::ready;
}

} // namespace RedisClient
