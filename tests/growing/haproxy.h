#pragma once

#include "tests/support/server_process.h"

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

#include <map>
#include <optional>

namespace growing {

/// HAProxy with the configuration packaging/growing/haproxy.cfg, on ports of 127.0.0.1. Ends with
/// the object, and with the test process.
class Haproxy {
public:
    /// What the configuration takes from the environment, but for its own addresses.
    explicit Haproxy(const std::map<QString, QString>& servers);

    int mongoPort() const { return m_mongoPort; }
    int redisPort() const { return m_redisPort; }

    /// Connections that lead to a server now; none if HAProxy takes it for down.
    std::optional<int> connectionsTo(const QByteArray& backend, const QByteArray& server) const;

private:
    bool tryToStart(const std::map<QString, QString>& servers);

    QTemporaryDir m_folder;
    int m_mongoPort = 0;
    int m_redisPort = 0;
    int m_statisticsPort = 0;
    test_support::ServerProcess m_process;
};

} // namespace growing
