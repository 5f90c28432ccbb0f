#pragma once

#include "redisclient/connection_config.h"
#include "redisclient/response.h"

#include <QByteArray>
#include <QList>

#include <chrono>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace RedisClient {

class Session;

/// A connection to one Redis server that runs one command at a time and waits for its answer.
///
/// Owns its socket and closes it when destroyed. Not thread-safe: one thread at a time, but not
/// always the same one; needs no event loop. connect() and commandSync() block, up to the time-outs
/// of the configuration; only the look-up of a host name has the system resolver's limits instead.
///
/// A server that answers that it does not serve at the moment (it reads its data back, say) is
/// taken for one that is not there: it is not connected to, and a command that it answers so has no
/// answer.
///
/// A connection that was lost is made anew by the next command, with the password, the name and the
/// database set again; what else the server kept for it (MULTI, WATCH) is gone. What is found
/// closed before a command is written costs the caller nothing. A command that the connection broke
/// under is not sent again, because the server may have run it: it ends with an Exception, also
/// when the server happened to close just as the command was being sent. After an Exception the
/// socket is closed and the object can be used on as if it were new.
///
/// A forked child must not use its parent's object: both would write to one socket and read each
/// other's answers. It may destroy it, which closes the child's end and leaves the parent's, and
/// make one of its own.
///
/// Only for commands with exactly one answer, in the protocol's second version: not SUBSCRIBE,
/// MONITOR, CLIENT REPLY or HELLO 3.
class Connection {
public:
    /// There is no answer. Names host, port, command and cause. An answer with which the server
    /// refuses the command is none of this: it is a Response. But a server that does not serve now,
    /// or refuses the database, has not come to the command at all.
    class Exception : public std::runtime_error {
    public:
        using std::runtime_error::runtime_error;
    };

    /// Stays off the network. Commands connect by themselves.
    explicit Connection(ConnectionConfig config);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Connects unless isConnected(), and always waits for it, which the external client does only
    /// when told to. False when the server cannot be reached, does not answer, does not serve now
    /// or refuses the password; never throws. The next command tries again then. Only if all of the
    /// time-out went by and the command comes within a second, it throws at once: a dead server is
    /// not waited for twice in a row.
    bool connect(bool wait = true);

    /// Asks the socket: false as soon as the server's closing has arrived here. Does not block.
    bool isConnected() const noexcept;

    /// Closes the socket at once. The next command opens another.
    void disconnect() noexcept;

    /// Runs a command, which must not be empty, in database `db`; a negative number, whichever,
    /// means the one of the last command that was answered (at first 0). If the server refuses the
    /// database, the command is not sent: the Exception names the database and has the server's
    /// words.
    Response commandSync(const QList<QByteArray>& parts, int db = -1);

private:
    bool open();
    Exception exception(const QByteArray& commandName, const std::string& cause) const;

    ConnectionConfig m_config;
    int m_db = 0;
    std::string m_lastFailure;
    std::optional<std::chrono::steady_clock::time_point> m_waitedInVainUntil;
    std::unique_ptr<Session> m_session;
};

} // namespace RedisClient
