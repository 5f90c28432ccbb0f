#include "tests/secured/redis_tunnel.h"

#include "tests/support/qt_literals.h"
#include "tests/support/test_socket.h"

#include <QFile>

#include <stdexcept>

namespace test_support {

using namespace literals;

namespace {

// Its words when it has bound its port.
constexpr auto ready = "Configuration successful";

constexpr auto configuration = R"(foreground = yes
[redis]
client = yes
accept = 127.0.0.1:%1
connect = 127.0.0.1:%2
CAfile = %3
verifyChain = yes
checkIP = 127.0.0.1
cert = %4
)";

} // namespace

RedisTunnel::RedisTunnel(int serverPort, const QString& authority, const QString& clientCertificate)
    : m_process(std::make_unique<ServerProcess>(m_folder.filePath("log"_q))) {
    const auto fileName = m_folder.filePath("stunnel.conf"_q);
    constexpr int attempts = 10;
    for (int attempt = 0; attempt < attempts; ++attempt) {
        // Another process may take the port in between.
        m_port = TestSocket::unusedPort();
        QFile file(fileName);
        if (!file.open(QIODevice::WriteOnly)) {
            throw std::runtime_error("cannot write the configuration of stunnel");
        }
        file.write(QString::fromLatin1(configuration)
                       .arg(m_port)
                       .arg(serverPort)
                       .arg(authority, clientCertificate)
                       .toUtf8());
        file.close();
        if (m_process->startAndAwait("stunnel"_q, {fileName}, ready)) {
            return;
        }
    }
    throw std::runtime_error("stunnel does not start: " + m_process->log().toStdString());
}

} // namespace test_support
