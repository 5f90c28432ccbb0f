#pragma once

#include "redisclient/redisclient.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace testing_support {

/// A Redis server of the test's own, on the loopback address: started by the constructor, which
/// throws std::runtime_error if it cannot be, and ended with the object (or with the test process).
class RedisServer {
public:
    /// `options` as on the command line of redis-server: "--databases", "2", …
    explicit RedisServer(QStringList options = {});
    ~RedisServer();
    RedisServer(const RedisServer&) = delete;
    RedisServer& operator=(const RedisServer&) = delete;

    int port() const { return m_port; }

    /// Ends it; the port stays reserved for start(), which nobody else takes as a rule.
    void stop();
    void start();
    /// Neither answers nor closes until resume().
    void freeze();
    void resume();

    /// Requires this password from new connections on.
    void setPassword(const QByteArray& password);
    /// Runs a command over a connection of its own and throws when it is refused.
    QVariant run(const QList<QByteArray>& command, int db = 0);
    /// How many times the server ran it (INFO commandstats).
    int callsOf(const QByteArray& lowerCaseName);
    /// The field `name` of CLIENT LIST for the one connection that is named `client`.
    QByteArray clientField(const QByteArray& client, const QByteArray& name);

private:
    class Process;

    bool tryToStart();

    QStringList m_options;
    QTemporaryDir m_folder;
    int m_port = 0;
    QByteArray m_password;
    std::unique_ptr<Process> m_process;
    std::unique_ptr<RedisClient::Connection> m_admin;
};

/// The server that the environment variable REDIS_URL names (redis://[:password@]host:port). Throws
/// std::runtime_error without one.
RedisClient::ConnectionConfig commonServer();

} // namespace testing_support
