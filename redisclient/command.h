#pragma once

#include <QByteArray>
#include <QList>
#include <QMetaType>

#include <utility>

namespace RedisClient {

/// A command for the server: its name and arguments as they go over the wire, and the database that
/// it is for.
///
/// A plain value; any bytes are allowed in every part, and no part is quoted or split. Nothing is
/// checked here: what is malformed is the server's to refuse.
class Command {
public:
    Command() = default;
    /// A negative `db` means the database of the last command.
    explicit Command(QList<QByteArray> parts, int db = -1) : m_parts(std::move(parts)), m_db(db) {}

    const QList<QByteArray>& parts() const { return m_parts; }
    int db() const { return m_db; }

private:
    QList<QByteArray> m_parts;
    int m_db = -1;
};

} // namespace RedisClient

Q_DECLARE_METATYPE(RedisClient::Command)
