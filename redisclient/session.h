#pragma once

#include "redisclient/response.h"
#include "redisclient/tcp_socket.h"

#include <QByteArray>
#include <QList>

#include <sys/types.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

struct redisContext;
struct redisReadTask;

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
/// with the socket. The only user of hiredis, which keeps the buffers and parses; connecting,
/// sending and receiving are done here, for the sake of deadlines and because hiredis would let a
/// closed socket raise SIGPIPE.
///
/// Owns the socket. One thread at a time. After a SessionError the object can only be destroyed.
class Session {
public:
    /// Connects, sends the password, makes sure that the server serves, and names the connection.
    /// Throws std::runtime_error (also SessionError) when the server cannot be reached, refuses the
    /// password or does not serve now. A refused name is no failure: it is only a label.
    explicit Session(const ConnectionConfig& config);
    ~Session();
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
    struct ContextDeleter {
        void operator()(redisContext* context) const noexcept;
    };

    // What hiredis calls.
    static ssize_t send(redisContext* context);
    static ssize_t receive(redisContext* context, char* buffer, std::size_t capacity);
    static void* createArray(const redisReadTask* task, std::size_t elements);

    bool hasUnreadAnswer() const noexcept;
    std::size_t answerBytes() const noexcept;
    void introduce(const ConnectionConfig& config, Clock::time_point deadline);
    void trackDatabase(const QList<QByteArray>& parts, const Response& response);
    ssize_t fail(int hiredisError, const char* cause) noexcept;
    SessionError failure() const;

    std::unique_ptr<redisContext, ContextDeleter> m_context;
    void* (*m_createArray)(const redisReadTask*, std::size_t) = nullptr;
    std::optional<int> m_database = 0; ///< none when that is not certain

    // Of the current command:
    Clock::time_point m_deadline;
    bool m_written = false;
    std::size_t m_receivedBytes = 0;
    std::size_t m_receivedElements = 0;

    const char* m_refusal = nullptr; ///< of what hiredis was told to give up
};

} // namespace RedisClient
