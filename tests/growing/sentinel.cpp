#include "tests/growing/sentinel.h"

#include "tests/support/qt_literals.h"
#include "tests/support/test_socket.h"

#include <QFile>

#include <stdexcept>

namespace growing {

using namespace test_support::literals;

Sentinel::Sentinel(int primaryPort)
    : m_folder("/tmp/kelvro-sentinel-XXXXXX"_q), m_process(m_folder.filePath("log"_q)) {
    constexpr int attempts = 10;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        // Another process may take the port in between.
        m_port = test_support::TestSocket::unusedPort();
        if (tryToStart(primaryPort)) {
            m_connection = std::make_unique<RedisClient::Connection>(
                RedisClient::ConnectionConfig("127.0.0.1"_q, QString(), m_port));
            return;
        }
    }
    throw std::runtime_error("Sentinel does not start: " + m_process.log().toStdString());
}

bool Sentinel::tryToStart(int primaryPort) {
    QFile shipped(QStringLiteral(KELVRO_GROWING_DIR "/sentinel.conf"));
    QFile own(m_folder.filePath("sentinel.conf"_q));
    if (!shipped.open(QIODevice::ReadOnly) || !own.open(QIODevice::WriteOnly)) {
        throw std::runtime_error("sentinel.conf cannot be read or copied");
    }
    own.write(shipped.readAll()
                  .replace("port 26379", "port " + QByteArray::number(m_port))
                  .replace("dir /var/lib/redis", "dir " + m_folder.path().toUtf8())
                  .replace("10.0.0.11 6379", "127.0.0.1 " + QByteArray::number(primaryPort)));
    own.write("bind 127.0.0.1\n");
    own.close();
    return m_process.startAndAwait("redis-server"_q, {own.fileName(), "--sentinel"_q},
                                   "+monitor master kelvro");
}

bool Sentinel::knows(int sentinels, int replicas) {
    return primary("num-other-sentinels").toInt() == sentinels - 1 &&
           primary("num-slaves").toInt() == replicas;
}

int Sentinel::primaryPort() {
    return primary("port").toInt();
}

void Sentinel::replacePrimary() {
    const auto answer = m_connection->commandSync({"SENTINEL", "FAILOVER", "kelvro"});
    if (answer.isErrorMessage()) {
        throw std::runtime_error("SENTINEL FAILOVER: " + answer.errorMessage().toStdString());
    }
}

QByteArray Sentinel::primary(const QByteArray& field) {
    const QVariantList answer =
        m_connection->commandSync({"SENTINEL", "MASTER", "kelvro"}).getValue().toList();
    const int name = answer.indexOf(field);
    return name < 0 ? QByteArray() : answer.value(name + 1).toByteArray();
}

} // namespace growing
