#pragma once

#include "tests/support/server_process.h"

#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace test_support {

/// What a server does before it says that something is stored.
enum class Durability {
    None,     ///< nothing: for tests that do not kill it
    Complete, ///< waits for the disk, as on a machine that keeps somebody's data
};

/// A PostgreSQL of the test's own, with the DocumentDB extension, made anew in a folder below /tmp:
/// under a second. Listens on a socket in that folder alone. Ends with the object, and with the
/// test process.
///
/// Its programs are those in the folder that the environment variable KELVRO_POSTGRESQL_BIN names;
/// as root it runs as the user postgres. Throws std::runtime_error, with the server's own words, if
/// it does not start.
class PostgresqlServer {
public:
    explicit PostgresqlServer(Durability durability = Durability::None);
    ~PostgresqlServer();
    PostgresqlServer(const PostgresqlServer&) = delete;
    PostgresqlServer& operator=(const PostgresqlServer&) = delete;

    /// Ends it in order, without waiting for its clients.
    void stop();
    /// On the same data. After kill() it first waits for what is left of the last one, and then
    /// makes up for what that did not write: returns when it serves.
    void start();
    /// SIGKILL to the server and at once to all of its processes: what it had not yet written is
    /// gone.
    void kill();

    /// As the user postgres in the database postgres.
    QByteArray sql(const QString& statement);
    /// What FerretDB takes as --postgresql-url.
    QString url() const;

private:
    QString subfolder(const char* name) const;
    void makeData();
    QStringList asUser(const QStringList& command) const;

    QString m_programs;
    Durability m_durability;
    QTemporaryDir m_folder;
    std::unique_ptr<ServerProcess> m_process;
};

} // namespace test_support
