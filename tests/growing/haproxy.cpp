#include "tests/growing/haproxy.h"

#include "tests/growing/await.h"
#include "tests/support/qt_literals.h"
#include "tests/support/test_socket.h"

#include <QProcessEnvironment>

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <stdexcept>
#include <system_error>

namespace growing {

using namespace test_support::literals;
using test_support::TestSocket;

namespace {

bool listens(int port) {
    try {
        TestSocket::connectedTo(port);
        return true;
    } catch (const std::system_error&) {
        return false;
    }
}

} // namespace

Haproxy::Haproxy(const std::map<QString, QString>& servers)
    : m_folder("/tmp/kelvro-haproxy-XXXXXX"_q), m_process(m_folder.filePath("log"_q)) {
    constexpr int attempts = 10;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        // Another process may take a port in between.
        m_mongoPort = TestSocket::unusedPort();
        m_redisPort = TestSocket::unusedPort();
        m_adminPort = TestSocket::unusedPort();
        if (tryToStart(servers)) {
            return;
        }
    }
    throw std::runtime_error("HAProxy does not start: " + m_process.log().toStdString());
}

bool Haproxy::tryToStart(const std::map<QString, QString>& servers) {
    auto environment = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : servers) {
        environment.insert(name, value);
    }
    environment.insert("KELVRO_HAPROXY_USER"_q,
                       QString::fromUtf8(::getpwuid(::geteuid())->pw_name));
    environment.insert("KELVRO_HAPROXY_GROUP"_q,
                       QString::fromUtf8(::getgrgid(::getegid())->gr_name));
    environment.insert("KELVRO_MONGODB"_q, QStringLiteral("127.0.0.1:%1").arg(m_mongoPort));
    environment.insert("KELVRO_REDIS"_q, QStringLiteral("127.0.0.1:%1").arg(m_redisPort));
    environment.insert("KELVRO_HAPROXY_ADMIN"_q,
                       QStringLiteral("ipv4@127.0.0.1:%1").arg(m_adminPort));
    m_process.setProcessEnvironment(environment);
    m_process.startAndAwait(
        "haproxy"_q, {"-db"_q, "-f"_q, QStringLiteral(KELVRO_GROWING_DIR "/haproxy.cfg")}, "");
    await(
        [this] {
            return m_process.waitForFinished(0) || (listens(m_mongoPort) && listens(m_redisPort));
        },
        "HAProxy");
    return m_process.state() == QProcess::Running;
}

QByteArray Haproxy::run(const QByteArray& command) const {
    TestSocket socket = TestSocket::connectedTo(m_adminPort);
    socket.write(command + '\n');
    QByteArray answer;
    for (QByteArray piece = socket.read(); !piece.isEmpty(); piece = socket.read()) {
        answer += piece;
    }
    return answer;
}

bool Haproxy::isUp(const QByteArray& backend, const QByteArray& server) const {
    return statistic(backend, server, "status").startsWith("UP");
}

int Haproxy::connectionsTo(const QByteArray& backend, const QByteArray& server) const {
    return statistic(backend, server, "scur").toInt();
}

QByteArray Haproxy::statistic(const QByteArray& backend, const QByteArray& server,
                              const QByteArray& name) const {
    const QList<QByteArray> lines = run("show stat").split('\n');
    const int column = lines.first().split(',').indexOf(name);
    for (const QByteArray& line : lines) {
        if (line.startsWith(backend + ',' + server + ',')) {
            return line.split(',').value(column);
        }
    }
    throw std::runtime_error("HAProxy knows no server " +
                             QByteArray(backend + '/' + server).toStdString());
}

} // namespace growing
