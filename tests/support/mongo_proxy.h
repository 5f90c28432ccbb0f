#pragma once

#include "tests/support/mongo_commands.h"

#include <atomic>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace test_support {

/// Stands between the code under test and the MongoDB server, for objects that make a client of
/// their own: records the requests that pass, and damages answers if told to.
///
/// Takes connections on a free port of the loopback address and relays them message by message, a
/// thread each. What the driver asks on its own account (hello, ping, endSessions) is not recorded.
class mongo_proxy {
public:
    /// Of the server in MONGODB_URL.
    mongo_proxy();
    ~mongo_proxy();

    mongo_proxy(const mongo_proxy&) = delete;
    mongo_proxy& operator=(const mongo_proxy&) = delete;

    /// The connection string of MONGODB_URL with the proxy for its server.
    std::string url() const;

    /// In the order of sending; a request is there before its answer is.
    std::vector<sent_command> sent() const;
    /// The one request that was sent; throws std::runtime_error if there is not just one.
    sent_command onlySent() const;
    void forget();

    /// From now on every answer has `damage` where it had `text`; both are of one length.
    void damageAnswers(std::string text, std::string damage);

    /// From now on requests are taken and not answered.
    void stayMute();

private:
    void acceptAll();
    void relay(int client, int server);
    void record(const std::string& message);
    std::string answered(std::string message) const;

    mutable std::mutex m_mutex;
    std::vector<sent_command> m_sent;
    std::string m_text;
    std::string m_damage;
    bool m_stopped = false;
    std::atomic<bool> m_mute = false;
    std::vector<int> m_sockets;
    std::list<std::jthread> m_relays;
    int m_listener = -1;
    std::jthread m_accepting;
};

} // namespace test_support
