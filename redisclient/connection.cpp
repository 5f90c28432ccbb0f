#include "redisclient/connection.h"

#include "redisclient/session.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <utility>

namespace RedisClient {

Connection::Connection(ConnectionConfig config) : m_config(std::move(config)) {}

Connection::~Connection() = default;

bool Connection::connect(bool /*wait*/) {
    m_waitedInVainUntil.reset();
    const auto start = Clock::now();
    if (isConnected() || open()) {
        return true;
    }
    const auto end = Clock::now();
    if (end - start >= std::chrono::milliseconds(m_config.connectTimeoutMsecs())) {
        m_waitedInVainUntil = end;
    }
    return false;
}

bool Connection::open() {
    disconnect();
    try {
        m_session = std::make_unique<Session>(m_config);
        return true;
    } catch (const std::exception& failure) {
        m_lastFailure = failure.what();
        return false;
    }
}

bool Connection::isConnected() const noexcept {
    return m_session && m_session->isUsable();
}

void Connection::disconnect() noexcept {
    m_session.reset();
}

Response Connection::commandSync(const QList<QByteArray>& parts, int db) {
    if (parts.isEmpty()) {
        // The server would not answer it at all.
        throw exception("(no command)", "a command needs at least a name");
    }
    if (db < 0) {
        db = m_db;
    }
    const auto waited = std::exchange(m_waitedInVainUntil, std::nullopt);
    for (bool mayConnect = !waited || Clock::now() - *waited > std::chrono::seconds(1);;) {
        if (!isConnected() && (!std::exchange(mayConnect, false) || !open())) {
            throw exception(parts.first(), "not connected: " + m_lastFailure);
        }
        const auto deadline =
            Clock::now() + std::chrono::milliseconds(m_config.commandTimeoutMsecs());
        bool selected = false;
        try {
            m_session->select(db, deadline);
            selected = true;
            Response response = m_session->roundTrip(parts, deadline);
            m_db = db;
            return response;
        } catch (const SessionError& error) {
            disconnect();
            m_lastFailure = error.what();
            const bool unsent = error.kind() == SessionError::Kind::notWritten ||
                                (error.kind() == SessionError::Kind::answerLost && !selected);
            if (!unsent) {
                throw exception(parts.first(), m_lastFailure);
            }
        }
    }
}

Connection::Exception Connection::exception(const QByteArray& commandName,
                                            const std::string& cause) const {
    // Of the command only the name: its arguments may be secrets.
    constexpr int maxNameLength = 32;
    const QString host =
        m_config.host().contains(u':') ? QString(u'[' + m_config.host() + u']') : m_config.host();
    std::string message = "Redis server " + host.toStdString() + ':' +
                          std::to_string(m_config.port()) + ": " +
                          commandName.left(maxNameLength).toStdString() + ": " + cause;
    // what() ends at a zero character.
    std::ranges::replace(message, '\0', '?');
    return Exception(message);
}

} // namespace RedisClient
