#pragma once

#include "redisclient/connection_config.h"
#include "redisclient/response.h"

#include <QByteArray>
#include <QList>

#include <memory>
#include <stdexcept>
#include <string>

namespace RedisClient {

class Command;
class Session;

/// A connection to one Redis server that runs one command at a time and waits for its answer.
///
/// Owns its socket and closes it when destroyed. Not thread-safe: one thread at a time, but not
/// always the same one; needs no event loop. connect() and commandSync() block, up to the time-outs
/// of the configuration; only the look-up of a host name has the system resolver's limits instead.
///
/// A connection that was lost is made anew by the next command, with the password, the name and the
/// database set again; what else the server kept for it (MULTI, WATCH) is gone. What is found
/// closed before a command is written costs the caller nothing. A command that the connection broke
/// under is not sent again, because the server may have run it: it ends with an Exception, also
/// when the server happened to close just as the command was being sent. After an Exception the
/// socket is closed and the object can be used on as if it were new.
///
/// Only for commands with exactly one answer: not SUBSCRIBE, MONITOR or CLIENT REPLY.
class Connection {
public:
    /// There is no answer. Names host, port, command and cause. An answer with which the server
    /// refuses the command is none of this: it is a Response.
    class Exception : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
    };

    /// Stays off the network. Without `autoConnect`, commands need a connect() before the first one
    /// and after every loss.
    explicit Connection(ConnectionConfig config, bool autoConnect = true);
    ~Connection();

    Connection(Connection&& other) noexcept;
    Connection& operator=(Connection&& other) noexcept;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Connects unless isConnected(). False when the server cannot be reached, does not answer, or
    /// refuses the password; never throws. The cause is then part of the message of the exception
    /// that a command without a connection throws.
    ///
    /// Without `wait` nothing is done yet and true means nothing: the next command connects, even
    /// without automatic connection.
    bool connect(bool wait = true);

    /// Asks the socket: false as soon as the server's closing has arrived here. Does not block.
    bool isConnected() const noexcept;

    /// Closes the socket at once. With automatic connection the next command opens another.
    void disconnect() noexcept;

    /// Runs a command in database `db`; a negative `db` means the one used last (at first 0). If
    /// the server refuses the database, the command is not sent and the refusal is its answer.
    Response commandSync(const QList<QByteArray>& parts, int db = -1);
    Response commandSync(const Command& command);

private:
    Exception exception(const QByteArray& commandName, const std::string& cause) const;

    ConnectionConfig m_config;
    bool m_autoConnect;
    bool m_connectRequested = false;
    int m_db = 0;
    std::string m_lastFailure;
    std::unique_ptr<Session> m_session;
};

} // namespace RedisClient
