#pragma once

#include "tests/support/fake_peer.h"

#include <QByteArray>

#include <atomic>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace test_support {

/// What the proxy has to know of a protocol in which every request has one answer.
struct WireFraming {
    /// The size of the first message in these bytes; 0 while it is not all there.
    int (*requestSize)(const QByteArray& bytes);
    int (*answerSize)(const QByteArray& bytes);
    /// What a whole request asks for: "insert", "SET".
    QByteArray (*nameOf)(const QByteArray& request);
};

class WireProxy;

/// One request that came to the proxy whole, and its answer. Lives on the proxy's thread.
class Exchange {
public:
    Exchange(WireProxy& proxy, TestSocket& client, int clientPort, TestSocket& server,
             QByteArray request);

    const QByteArray& request() const { return m_request; }
    /// Sends the server the next bytes of the request, that many.
    void forward(int size);
    /// Sends it what is left of the request and waits for the answer, which does not go on by
    /// itself. Empty when one of the two has gone.
    QByteArray answer();
    /// To the client.
    void reply(const QByteArray& bytes);

    // Each ends the connection, the first two at once.
    void close();
    void reset();
    /// When the client has had enough.
    void stall();

    bool isOver() const { return m_isOver; }

private:
    WireProxy& m_proxy;
    TestSocket& m_client;
    int m_clientPort;
    TestSocket& m_server;
    QByteArray m_request;
    int m_forwarded = 0;
    bool m_isOver = false;
};

/// Stands between the code under test and a real server: writes down the requests that pass, and
/// breaks what it is told to break. Of both protocols it knows only where a message ends.
///
/// A request is written down before the server gets it: once its answer is there, so is its record.
class WireProxy {
public:
    /// Deals with a request in place of passing it and its answer on.
    using Fault = std::function<void(Exchange&)>;
    static constexpr int always = -1;

    WireProxy(const WireFraming& framing, std::string serverHost, int serverPort);

    int port() const { return m_peer.port(); }
    int connections() const { return m_peer.connections(); }

    /// The requests of a connection (counted from 1) since the last forget().
    std::vector<QByteArray> bytesOver(int connection) const;
    void forget();

    /// The next requests of that name (empty is any name), that many times, meet the fault.
    void breakAt(QByteArray name, Fault fault, int times = 1);
    /// Closes the connection on which more bytes than that pass from now on, there and back and
    /// over all connections; once.
    void closeAfter(int bytes);
    /// How many have passed so far.
    int bytesPassed() const { return m_bytesPassed; }
    void closeConnections() { m_peer.endConnections(); }
    void resetConnections() { m_peer.resetConnections(); }

    /// Whether the client's socket with this port waits for an answer that will never come.
    bool isStalling(int clientPort) const;

private:
    friend class Exchange;

    void relay(TestSocket& client, int number);
    Fault faultFor(const QByteArray& name);
    /// A message, whole, unless one of the two has gone or too many bytes have passed.
    QByteArray take(TestSocket& from, TestSocket& other, int (*sizeOf)(const QByteArray&));
    /// How many of so many bytes may pass.
    int allowed(int bytes);
    void setStalling(int clientPort, bool stalls);

    WireFraming m_framing;
    std::string m_serverHost;
    int m_serverPort;
    std::atomic<int> m_bytesPassed = 0;
    mutable std::mutex m_mutex;
    std::map<int, std::vector<QByteArray>> m_recorded;
    QByteArray m_faultName;
    Fault m_fault;
    int m_faultTimes = 0;
    int m_closeAt = always;
    std::set<int> m_stalling;
    FakePeer m_peer; // destroyed first, for its threads use the rest
};

/// The same with the requests decoded. `Protocol` has a WireFraming `framing`, the type `Request`
/// and `read`, which gives nothing for a request that is the client library's own affair.
template <typename Protocol>
class RecordingProxy : public WireProxy {
public:
    using Request = typename Protocol::Request;

    RecordingProxy(std::string serverHost, int serverPort)
        : WireProxy(Protocol::framing, std::move(serverHost), serverPort) {}

    /// In the order of sending.
    std::vector<Request> sentOver(int connection) const {
        std::vector<Request> requests;
        for (const QByteArray& bytes : bytesOver(connection)) {
            if (auto request = Protocol::read(bytes)) {
                requests.push_back(*std::move(request));
            }
        }
        return requests;
    }

    /// Those of all connections, one connection after the other.
    std::vector<Request> sent() const {
        std::vector<Request> all;
        for (int connection = 1; connection <= connections(); ++connection) {
            for (auto& request : sentOver(connection)) {
                all.push_back(std::move(request));
            }
        }
        return all;
    }

    /// The one request that was sent; throws std::runtime_error if there is not just one.
    Request onlySent() const {
        auto all = sent();
        if (all.size() != 1) {
            throw std::runtime_error(std::to_string(all.size()) + " requests were sent");
        }
        return std::move(all.front());
    }
};

} // namespace test_support
