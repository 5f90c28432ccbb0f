#include "tests/growing/haproxy.h"

#include "tests/growing/await.h"
#include "tests/support/qt_literals.h"
#include "tests/support/test_socket.h"

#include <QProcessEnvironment>

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
        m_statisticsPort = TestSocket::unusedPort();
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
    environment.insert("KELVRO_MONGODB"_q, QStringLiteral("127.0.0.1:%1").arg(m_mongoPort));
    environment.insert("KELVRO_REDIS"_q, QStringLiteral("127.0.0.1:%1").arg(m_redisPort));
    environment.insert("KELVRO_HAPROXY_STATISTICS"_q,
                       QStringLiteral("ipv4@127.0.0.1:%1").arg(m_statisticsPort));
    m_process.setProcessEnvironment(environment);
    m_process.startAndAwait("haproxy"_q,
                            {"-db"_q, "-f"_q, QStringLiteral(KELVRO_GROWING_DIR "/haproxy.cfg")},
                            "");
    await(
        [this] {
            return m_process.waitForFinished(0) || (listens(m_mongoPort) && listens(m_redisPort));
        },
        "HAProxy");
    return m_process.state() == QProcess::Running;
}

std::optional<int> Haproxy::connectionsTo(const QByteArray& backend,
                                          const QByteArray& server) const {
    TestSocket socket = TestSocket::connectedTo(m_statisticsPort);
    socket.write("show stat\n");
    QByteArray answer;
    for (QByteArray piece = socket.read(); !piece.isEmpty(); piece = socket.read()) {
        answer += piece;
    }
    const QList<QByteArray> lines = answer.split('\n');
    const QList<QByteArray> names = lines.first().split(',');
    for (const QByteArray& line : lines) {
        const QList<QByteArray> fields = line.split(',');
        if (fields.value(0) == backend && fields.value(1) == server &&
            fields.value(names.indexOf("status")).startsWith("UP")) {
            return fields.value(names.indexOf("scur")).toInt();
        }
    }
    return std::nullopt;
}

} // namespace growing
