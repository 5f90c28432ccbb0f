#pragma once

#include "tests/support/postgresql_server.h"
#include "tests/support/server_process.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <string>

namespace test_support {

/// What a MongoServer asks of its clients; by default nothing.
struct MongoServerOptions {
    /// Of FerretDB: "--auth" asks for the name and the password of a user whom the caller makes
    /// by PostgresqlServer::sql(); certificates are named by "--listen-tls-cert-file=…".
    QStringList arguments{QStringLiteral("--no-auth")};
    /// Listens for TLS, and for nothing else.
    bool tls = false;
    /// Of the connection string: "user:password@", empty without.
    std::string credentials{};
    /// Of the connection string: "tls=true&tlsCAFile=…".
    std::string urlOptions{};
};

/// A MongoDB server of the test's own: FerretDB before a PostgresqlServer, on a port of 127.0.0.1
/// that it keeps. Ends with the object, and with the test process.
///
/// The two are killed and started apart, and in any order. FerretDB starts without its PostgreSQL
/// and then answers with errors until that is there. The program is the one that the environment
/// variable KELVRO_FERRETDB names. Throws std::runtime_error, with the server's own words, if it
/// does not start.
class MongoServer {
public:
    /// The PostgreSQL has to live longer.
    explicit MongoServer(const PostgresqlServer& storage, MongoServerOptions options = {});
    ~MongoServer();
    MongoServer(const MongoServer&) = delete;
    MongoServer& operator=(const MongoServer&) = delete;

    int port() const { return m_port; }
    /// A connection string, which ends with "/" or with options ("/?a=b").
    std::string url() const;

    /// Ends it in order.
    void stop();
    /// On the same port; returns when it listens.
    void start();
    /// SIGKILL.
    void kill();
    /// Neither answers nor closes until resume().
    void freeze();
    void resume();

    QByteArray log() const { return m_process->log(); }

private:
    bool tryToStart();

    QString m_program;
    MongoServerOptions m_options;
    QString m_storageUrl;
    QTemporaryDir m_folder;
    int m_port = 0;
    std::unique_ptr<ServerProcess> m_process;
};

} // namespace test_support
