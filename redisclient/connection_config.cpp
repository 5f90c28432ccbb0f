#include "redisclient/connection_config.h"

#include <stdexcept>
#include <utility>

namespace RedisClient {

ConnectionConfig::ConnectionConfig(QString host, const QString& auth, int port, QString name)
    : m_host(std::move(host)), m_auth(auth.toUtf8()), m_port(port), m_name(std::move(name)) {}

void ConnectionConfig::setTimeouts(int connectTimeoutMsecs, int commandTimeoutMsecs) {
    if (connectTimeoutMsecs <= 0 || commandTimeoutMsecs <= 0) {
        throw std::invalid_argument("the time-outs of a Redis connection must be positive");
    }
    m_connectTimeoutMsecs = connectTimeoutMsecs;
    m_commandTimeoutMsecs = commandTimeoutMsecs;
}

} // namespace RedisClient
