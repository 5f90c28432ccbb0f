#pragma once

#include "tests/support/server_process.h"

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <map>

namespace growing {

/// HAProxy with the configuration packaging/growing/haproxy.cfg, on ports of 127.0.0.1. Ends with
/// the object, and with the test process.
class Haproxy {
public:
    /// What the configuration takes from the environment, but for its own addresses.
    explicit Haproxy(const std::map<QString, QString>& servers);

    int mongoPort() const { return m_mongoPort; }
    int redisPort() const { return m_redisPort; }

    /// A command of its administration, and what it says to that.
    QByteArray run(const QByteArray& command) const;
    /// Whether it leads to that server.
    bool isUp(const QByteArray& backend, const QByteArray& server) const;
    /// How many connections lead there now.
    int connectionsTo(const QByteArray& backend, const QByteArray& server) const;

private:
    QByteArray statistic(const QByteArray& backend, const QByteArray& server,
                         const QByteArray& name) const;
    bool tryToStart(const std::map<QString, QString>& servers);

    QTemporaryDir m_folder;
    int m_mongoPort = 0;
    int m_redisPort = 0;
    int m_adminPort = 0;
    test_support::ServerProcess m_process;
};

} // namespace growing
