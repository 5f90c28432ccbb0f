#pragma once

#include "tests/redisclient/fake_peer.h"

#include <QByteArray>
#include <QList>

#include <map>
#include <mutex>
#include <vector>

namespace testing_support {

/// Stands between the code under test and a real server on the loopback address, and writes down
/// what goes through to the server, byte by byte.
///
/// A command is written down before the server gets it: once its answer is there, so is its record.
class RecordingProxy {
public:
    explicit RecordingProxy(int serverPort);

    int port() const { return m_peer.port(); }
    int connections() const { return m_peer.connections(); }

    /// The commands of a connection (counted from 1) since the last forget(), each as its parts.
    std::vector<QList<QByteArray>> sentOver(int connection) const;
    /// Those of all connections, one connection after the other.
    std::vector<QList<QByteArray>> sent() const;
    void forget();

private:
    void relay(TestSocket& client, int number);
    void record(int number, const QByteArray& bytes);

    int m_serverPort;
    mutable std::mutex m_mutex;
    std::map<int, QByteArray> m_bytes;
    FakePeer m_peer; // destroyed first, for its threads record
};

} // namespace testing_support
