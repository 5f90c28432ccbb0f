#include "tests/support/redis_server.h"

#include "tests/support/test_socket.h"

#include <QUrl>

#include <signal.h>

#include <stdexcept>

namespace test_support {

namespace {

constexpr const char* ready = "Ready to accept connections";

} // namespace

RedisServer::RedisServer(QStringList options, QString host)
    : m_options(std::move(options)), m_host(std::move(host)) {
    constexpr int attempts = 10;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        // Another process may take the port in between.
        m_port = TestSocket::listenOn(m_host.toLatin1().constData(), 1).port();
        if (tryToStart({}, ready)) {
            return;
        }
    }
    throw std::runtime_error("redis-server does not start: " + m_process->log().toStdString() +
                             m_process->errorString().toStdString());
}

RedisServer::~RedisServer() = default;

bool RedisServer::tryToStart(const QStringList& more, const char* outputToWaitFor) {
    m_process = std::make_unique<ServerProcess>(m_folder.filePath(QStringLiteral("log")));
    if (!m_process->startAndAwait(QStringLiteral("redis-server"),
                                  QStringList{QStringLiteral("--port"), QString::number(m_port),
                                              QStringLiteral("--bind"), m_host,
                                              QStringLiteral("--save"), QString(),
                                              QStringLiteral("--dir"), m_folder.path()} +
                                      m_options + more,
                                  outputToWaitFor)) {
        return false;
    }
    makeAdmin();
    return true;
}

void RedisServer::makeAdmin() {
    m_admin = std::make_unique<RedisClient::Connection>(RedisClient::ConnectionConfig(
        m_host, QString::fromUtf8(m_password), m_port, QStringLiteral("admin")));
}

void RedisServer::stop() {
    m_admin.reset();
    m_process->endBy(SIGTERM);
}

void RedisServer::start() {
    m_password.clear();
    if (!tryToStart({}, ready)) {
        throw std::runtime_error("redis-server does not start again");
    }
}

void RedisServer::kill() {
    m_admin.reset();
    m_process->killAndWait();
}

void RedisServer::startLoading(std::chrono::microseconds timeForAKey, const QStringList& more) {
    const QStringList slow{QStringLiteral("--key-load-delay"), QString::number(timeForAKey.count()),
                           // How often it looks at its clients meanwhile.
                           QStringLiteral("--loading-process-events-interval-bytes"),
                           QStringLiteral("1024")};
    if (!tryToStart(slow + more, "Loading RDB produced by")) {
        throw std::runtime_error("redis-server does not read its data back");
    }
}

void RedisServer::freeze() {
    m_process->send(SIGSTOP);
}

void RedisServer::resume() {
    m_process->send(SIGCONT);
}

void RedisServer::setPassword(const QByteArray& password) {
    run({"CONFIG", "SET", "requirepass", password});
    m_password = password;
    makeAdmin();
}

QVariant RedisServer::run(const QList<QByteArray>& command, int db) {
    const RedisClient::Response response = m_admin->commandSync(command, db);
    if (response.isErrorMessage()) {
        throw std::runtime_error(command.first().toStdString() + ": " +
                                 response.errorMessage().toStdString());
    }
    return response.getValue();
}

QByteArray RedisServer::info(const QByteArray& section, const QByteArray& start) {
    const QList<QByteArray> lines = run({"INFO", section}).toByteArray().split('\n');
    for (const QByteArray& line : lines) {
        if (line.startsWith(start)) {
            return line.mid(start.size()).trimmed();
        }
    }
    return {};
}

int RedisServer::connections() {
    return info("stats", "total_connections_received:").toInt();
}

int RedisServer::callsOf(const QByteArray& lowerCaseName) {
    const QByteArray calls = info("commandstats", "cmdstat_" + lowerCaseName + ":calls=");
    return calls.left(calls.indexOf(',')).toInt();
}

QByteArray RedisServer::clientField(const QByteArray& client, const QByteArray& name) {
    const QByteArray list = run({"CLIENT", "LIST"}).toByteArray();
    for (const QByteArray& line : list.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        if (!fields.contains("name=" + client)) {
            continue;
        }
        for (const QByteArray& field : fields) {
            if (field.startsWith(name + '=')) {
                return field.mid(name.size() + 1);
            }
        }
    }
    return {};
}

RedisClient::ConnectionConfig commonServer() {
    const QUrl url(qEnvironmentVariable("REDIS_URL"));
    if (!url.isValid() || url.host().isEmpty()) {
        throw std::runtime_error("REDIS_URL does not name a Redis server");
    }
    return RedisClient::ConnectionConfig(url.host(), url.password(),
                                         url.port(RedisClient::ConnectionConfig::defaultPort));
}

} // namespace test_support
