#include "tests/support/mongo_server.h"

#include "tests/support/test_socket.h"

#include <signal.h>

#include <stdexcept>
#include <utility>

namespace test_support {

MongoServer::MongoServer(const PostgresqlServer& storage, MongoServerOptions options)
    : m_program(neededVariable("KELVRO_FERRETDB")), m_options(std::move(options)),
      m_storageUrl(storage.url()), m_folder(QStringLiteral("/tmp/kelvro-ferretdb-XXXXXX")),
      m_process(std::make_unique<ServerProcess>(m_folder.filePath(QStringLiteral("log")))) {
    constexpr int attempts = 10;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        // Another process may take the port in between.
        m_port = TestSocket::unusedPort();
        if (tryToStart()) {
            return;
        }
    }
    throw std::runtime_error("FerretDB does not start: " + m_process->log().toStdString());
}

MongoServer::~MongoServer() = default;

std::string MongoServer::url() const {
    return "mongodb://" + m_options.credentials + "127.0.0.1:" + std::to_string(m_port) + "/" +
           (m_options.urlOptions.empty() ? "" : "?" + m_options.urlOptions);
}

bool MongoServer::tryToStart() {
    const QString address = QStringLiteral("127.0.0.1:%1").arg(m_port);
    return m_process->startAndAwait(
        m_program,
        QStringList{QStringLiteral("--postgresql-url=") + m_storageUrl,
                    QStringLiteral("--listen-addr=") + (m_options.tls ? QString() : address),
                    QStringLiteral("--listen-tls=") + (m_options.tls ? address : QString()),
                    QStringLiteral("--telemetry=disable"), QStringLiteral("--debug-addr=-"),
                    QStringLiteral("--state-dir=") + m_folder.path()} +
            m_options.arguments,
        m_options.tls ? "Listening on TLS" : "Listening on TCP");
}

void MongoServer::stop() {
    m_process->endBy(SIGTERM);
}

void MongoServer::start() {
    if (!tryToStart()) {
        throw std::runtime_error("FerretDB does not start again: " +
                                 m_process->log().toStdString());
    }
}

void MongoServer::kill() {
    m_process->killAndWait();
}

void MongoServer::freeze() {
    m_process->send(SIGSTOP);
}

void MongoServer::resume() {
    m_process->send(SIGCONT);
}

} // namespace test_support
