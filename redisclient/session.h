#pragma once

#include "redisclient/reply_reader.h"
#include "redisclient/response.h"
#include "redisclient/tcp_socket.h"

#include <QByteArray>
#include <QList>

#include <array>
#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>

namespace RedisClient {

class ConnectionConfig;

/// A command got no answer.
class SessionError : public std::runtime_error {
public:
    enum class Kind {
        notWritten, ///< the connection broke before a byte of the command was accepted for sending
        answerLost, ///< the connection broke, or what came was no answer
        refused,    ///< the server does not serve now, or not this database
        timedOut,
    };

    SessionError(Kind kind, const std::string& cause) : std::runtime_error(cause), m_kind(kind) {}

    Kind kind() const { return m_kind; }

private:
    Kind m_kind;
};

/// One conversation with a server, from the connecting to the first failure: everything that ends
/// with the socket. Connecting, sending and receiving are done here and not by hiredis, for the
/// sake of deadlines and because it would let a closed socket raise SIGPIPE.
///
/// Owns the socket. One thread at a time. After a SessionError the object can only be destroyed.
class Session {
public:
    /// Connects, sends the password, makes sure that the server serves, and names the connection.
    /// Throws std::runtime_error (also SessionError) when the server cannot be reached, refuses the
    /// password or does not serve now. A refused name is no failure: it is only a label.
    explicit Session(const ConnectionConfig& config);
    ~Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    /// False once the server has closed, and also when it sent something unasked, which would be
    /// taken for the answer to the next command.
    bool isUsable() const noexcept;

    /// Sends a command, which must not be empty, and returns its answer. Blocks until the deadline
    /// at the longest. Throws SessionError.
    Response roundTrip(const QList<QByteArray>& parts, Clock::time_point deadline);

    /// Makes sure that the server uses database `db`. Throws SessionError like roundTrip().
    void select(int db, Clock::time_point deadline);

private:
    void introduce(const ConnectionConfig& config, Clock::time_point deadline);
    void format(const QList<QByteArray>& parts);
    void send(const QList<QByteArray>& parts, Clock::time_point deadline);
    Response receive(Clock::time_point deadline);
    bool waitFor(short events, Clock::time_point deadline, const char* timedOut) const;
    void trackDatabase(const QList<QByteArray>& parts, const Response& response);

    TcpSocket m_socket;
    std::string m_command;
    std::array<char, std::size_t{16} << 10> m_received{};
    ReplyReader m_answers;
    std::optional<int> m_database = 0; ///< none when that is not certain
};

} // namespace RedisClient
