#include "tests/redisclient/redis_server.h"

#include "tests/redisclient/test_socket.h"

#include <QProcess>
#include <QUrl>

#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>

#include <stdexcept>

namespace testing_support {

namespace {

constexpr int startMsecs = 30'000;

} // namespace

class RedisServer::Process : public QProcess {
public:
    ~Process() override {
        if (state() != NotRunning) {
            ::kill(static_cast<pid_t>(processId()), SIGCONT);
            kill();
            waitForFinished(startMsecs);
        }
    }

protected:
    void setupChildProcess() override { ::prctl(PR_SET_PDEATHSIG, SIGKILL); }
};

RedisServer::RedisServer(QStringList options) : m_options(std::move(options)) {
    constexpr int attempts = 10;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        // Another process may take the port in between.
        m_port = TestSocket::listenOn(AF_INET, 1).port();
        if (tryToStart()) {
            return;
        }
    }
    throw std::runtime_error(
        "redis-server does not start: " + m_process->readAllStandardOutput().toStdString() +
        m_process->errorString().toStdString());
}

RedisServer::~RedisServer() = default;

bool RedisServer::tryToStart() {
    m_process = std::make_unique<Process>();
    m_process->setProcessChannelMode(QProcess::MergedChannels);
    m_process->start(QStringLiteral("redis-server"),
                     QStringList{QStringLiteral("--port"), QString::number(m_port),
                                 QStringLiteral("--bind"), QStringLiteral("127.0.0.1"),
                                 QStringLiteral("--save"), QString(), QStringLiteral("--dir"),
                                 m_folder.path()} +
                         m_options);
    QByteArray output;
    while (!output.contains("Ready to accept connections")) {
        if (!m_process->waitForReadyRead(startMsecs)) {
            return false;
        }
        output += m_process->readAllStandardOutput();
    }
    RedisClient::ConnectionConfig config(QStringLiteral("127.0.0.1"), QString(), m_port,
                                         QStringLiteral("admin"));
    config.setAuthBytes(m_password);
    m_admin = std::make_unique<RedisClient::Connection>(config);
    return true;
}

void RedisServer::stop() {
    m_admin.reset();
    m_process->terminate();
    if (!m_process->waitForFinished(startMsecs)) {
        throw std::runtime_error("redis-server does not stop");
    }
}

void RedisServer::start() {
    m_password.clear();
    if (!tryToStart()) {
        throw std::runtime_error("redis-server does not start again");
    }
}

void RedisServer::freeze() {
    ::kill(static_cast<pid_t>(m_process->processId()), SIGSTOP);
}

void RedisServer::resume() {
    ::kill(static_cast<pid_t>(m_process->processId()), SIGCONT);
}

void RedisServer::setPassword(const QByteArray& password) {
    run({"CONFIG", "SET", "requirepass", password});
    m_password = password;
    RedisClient::ConnectionConfig config(QStringLiteral("127.0.0.1"), QString(), m_port,
                                         QStringLiteral("admin"));
    config.setAuthBytes(password);
    m_admin = std::make_unique<RedisClient::Connection>(config);
}

QVariant RedisServer::run(const QList<QByteArray>& command, int db) {
    const RedisClient::Response response = m_admin->commandSync(command, db);
    if (response.isErrorMessage()) {
        throw std::runtime_error(command.first().toStdString() + ": " +
                                 response.errorMessage().toStdString());
    }
    return response.getValue();
}

int RedisServer::callsOf(const QByteArray& lowerCaseName) {
    const QByteArray statistics = run({"INFO", "commandstats"}).toByteArray();
    const QByteArray start = "cmdstat_" + lowerCaseName + ":calls=";
    const int position = statistics.indexOf(start);
    if (position < 0) {
        return 0;
    }
    const QByteArray rest = statistics.mid(position + start.size());
    return rest.left(rest.indexOf(',')).toInt();
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

} // namespace testing_support
