#include "redisclient/connection.h"

#include "redisclient/command.h"
#include "redisclient/session.h"

#include <algorithm>
#include <chrono>
#include <exception>
#include <optional>
#include <utility>

namespace RedisClient {

namespace {

/// The refusal, or nothing once `db` is what the session uses.
std::optional<Response> select(Session& session, int db, Clock::time_point deadline) {
    if (session.database() == db) {
        return std::nullopt;
    }
    Response response = session.roundTrip({"SELECT", QByteArray::number(db)}, deadline);
    if (response.isErrorMessage()) {
        return response;
    }
    if (response.type() != Response::Status) {
        throw SessionError(SessionError::Kind::answerLost, "SELECT got no answer of its kind");
    }
    return std::nullopt;
}

} // namespace

Connection::Connection(ConnectionConfig config, bool autoConnect)
    : m_config(std::move(config)), m_autoConnect(autoConnect) {}

Connection::~Connection() = default;
Connection::Connection(Connection&& other) noexcept = default;
Connection& Connection::operator=(Connection&& other) noexcept = default;

bool Connection::connect(bool wait) {
    if (isConnected()) {
        return true;
    }
    disconnect();
    if (!wait) {
        m_connectRequested = true;
        return true;
    }
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
    m_connectRequested = false;
}

Response Connection::commandSync(const QList<QByteArray>& parts, int db) {
    return commandSync(Command(parts, db));
}

Response Connection::commandSync(const Command& command) {
    if (command.parts().isEmpty()) {
        // The server would not answer it at all.
        throw exception("(no command)", "a command needs at least a name");
    }
    const QByteArray& name = command.parts().first();
    const int db = command.db() < 0 ? m_db : command.db();
    bool mayConnect = m_autoConnect || m_connectRequested;
    for (;;) {
        if (!isConnected()) {
            if (m_session) {
                m_lastFailure = "the server closed the connection";
            }
            disconnect();
            if (!std::exchange(mayConnect, false) || !connect()) {
                throw exception(name, "not connected: " + m_lastFailure);
            }
        }
        const auto deadline =
            Clock::now() + std::chrono::milliseconds(m_config.commandTimeoutMsecs());
        bool selected = false;
        try {
            if (auto refusal = select(*m_session, db, deadline)) {
                return *std::move(refusal);
            }
            selected = true;
            Response response = m_session->roundTrip(command.parts(), deadline);
            m_db = m_session->database().value_or(db);
            return response;
        } catch (const SessionError& error) {
            disconnect();
            m_lastFailure = error.what();
            const bool written = selected && error.kind() != SessionError::Kind::notWritten;
            const bool timedOut = error.kind() == SessionError::Kind::timedOut;
            if (written || timedOut || !mayConnect) {
                throw exception(name, m_lastFailure);
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
