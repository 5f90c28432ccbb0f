#pragma once

#include "tests/support/server_process.h"

#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace test_support {

/// stunnel on this machine: takes plain connections on a port of 127.0.0.1 and leads them through
/// TLS to a server's port. Ends with the object. Throws std::runtime_error, with its own words, if
/// it does not start.
class RedisTunnel {
public:
    /// Demands a certificate of that authority, for 127.0.0.1, and shows the other one, with its
    /// key in the same file.
    RedisTunnel(int serverPort, const QString& authority, const QString& clientCertificate);

    int port() const { return m_port; }
    void kill() { m_process->killAndWait(); }

private:
    QTemporaryDir m_folder;
    int m_port = 0;
    std::unique_ptr<ServerProcess> m_process;
};

} // namespace test_support
