#pragma once

#include "redisclient/redisclient.h"
#include "tests/support/server_process.h"

#include <QByteArray>
#include <QTemporaryDir>

#include <memory>

namespace growing {

/// A Redis Sentinel of the test's own, with the settings of packaging/growing/sentinel.conf. Ends
/// with the object, and with the test process.
class Sentinel {
public:
    /// Watches the primary that listens on this port of 127.0.0.1.
    explicit Sentinel(int primaryPort);

    int port() const { return m_port; }
    /// Has found the other Sentinels and the replica.
    bool knows(int sentinels, int replicas);
    /// Of the server that it takes for the primary.
    int primaryPort();
    /// Puts the replica into the primary's place, as a person on duty does.
    void replacePrimary();

private:
    bool tryToStart(int primaryPort);
    /// What it says of the primary.
    QByteArray primary(const QByteArray& field);

    QTemporaryDir m_folder;
    int m_port = 0;
    test_support::ServerProcess m_process;
    std::unique_ptr<RedisClient::Connection> m_connection;
};

} // namespace growing
