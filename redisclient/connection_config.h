#pragma once

#include <QByteArray>
#include <QString>

namespace RedisClient {

/// Where a Redis server is, and how to introduce oneself there.
///
/// A plain value: nothing is looked up or checked here but the time-outs; what is wrong with host
/// or port shows when a connection is made.
class ConnectionConfig {
public:
    static constexpr int defaultPort = 6379;
    static constexpr int defaultConnectTimeoutMsecs = 5'000;
    static constexpr int defaultCommandTimeoutMsecs = 60'000;

    /// `host` is a name or an IPv4 or IPv6 address (without brackets). `auth` is the password, sent
    /// as UTF-8; empty means that none is sent. `name` is what CLIENT LIST shows for the
    /// connection; empty means none.
    explicit ConnectionConfig(QString host, const QString& auth = QString(), int port = defaultPort,
                              QString name = QString());

    const QString& host() const { return m_host; }
    /// The password as sent.
    const QByteArray& auth() const { return m_auth; }
    int port() const { return m_port; }
    const QString& name() const { return m_name; }
    int connectTimeoutMsecs() const { return m_connectTimeoutMsecs; }
    int commandTimeoutMsecs() const { return m_commandTimeoutMsecs; }

    /// How long connecting (with everything that is said then, but without the look-up of the host
    /// name, which has the system resolver's limits) and a command (from its first byte to the last
    /// one of the answer) may take. Throws std::invalid_argument unless both are positive.
    void setTimeouts(int connectTimeoutMsecs, int commandTimeoutMsecs);

private:
    QString m_host;
    QByteArray m_auth;
    int m_port;
    QString m_name;
    int m_connectTimeoutMsecs = defaultConnectTimeoutMsecs;
    int m_commandTimeoutMsecs = defaultCommandTimeoutMsecs;
};

} // namespace RedisClient
