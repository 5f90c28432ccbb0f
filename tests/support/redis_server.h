#pragma once

#include "redisclient/redisclient.h"
#include "tests/support/server_process.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <QTemporaryDir>

#include <chrono>
#include <memory>

namespace test_support {

/// A Redis server of the test's own: started by the constructor, which throws std::runtime_error if
/// it cannot be, and ended with the object (or with the test process).
class RedisServer {
public:
    /// `options` as on the command line of redis-server: "--databases", "2", …
    explicit RedisServer(QStringList options = {}, QString host = QStringLiteral("127.0.0.1"));
    ~RedisServer();
    RedisServer(const RedisServer&) = delete;
    RedisServer& operator=(const RedisServer&) = delete;

    int port() const { return m_port; }

    /// Ends it; the port stays reserved for start(), which nobody else takes as a rule.
    void stop();
    void start();
    /// Ends it without a chance to save anything.
    void kill();
    /// Starts it again, but returns while it still reads its data back (from the SAVE before),
    /// which takes that long for each of its keys. Takes more options for this time.
    void startLoading(std::chrono::microseconds timeForAKey, const QStringList& more = {});
    /// Neither answers nor closes until resume().
    void freeze();
    void resume();

    /// Requires this password from new connections on.
    void setPassword(const QByteArray& password);
    /// Runs a command over a connection of its own and throws when it is refused.
    QVariant run(const QList<QByteArray>& command, int db = 0);
    /// How many connections the server has accepted in its life, this object's too.
    int connections();
    /// How many times the server ran it (INFO commandstats).
    int callsOf(const QByteArray& lowerCaseName);
    /// The line of INFO that begins so, without that beginning; empty without one.
    QByteArray info(const QByteArray& section, const QByteArray& start);
    /// The field `name` of CLIENT LIST for the one connection that is named `client`.
    QByteArray clientField(const QByteArray& client, const QByteArray& name);

private:
    bool tryToStart(const QStringList& more, const char* outputToWaitFor);
    void makeAdmin();

    QStringList m_options;
    QString m_host;
    QTemporaryDir m_folder;
    int m_port = 0;
    QByteArray m_password;
    std::unique_ptr<ServerProcess> m_process;
    std::unique_ptr<RedisClient::Connection> m_admin;
};

/// The server that the environment variable REDIS_URL names (redis://[:password@]host:port). Throws
/// std::runtime_error without one.
RedisClient::ConnectionConfig commonServer();

} // namespace test_support
