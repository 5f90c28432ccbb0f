#pragma once

#include "tests/support/extended_json.h"

#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/database.hpp>

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace test_support {

/// One request as it went to the server.
struct sent_command {
    std::string name;
    bsoncxx::v1::document::value body;

    /// Canonical extended JSON of those of the named fields that the request has, in its own order.
    std::string part(std::initializer_list<std::string_view> fields) const;

    /// Canonical extended JSON of all of it but for what the driver adds by itself: session,
    /// database, read preference. An option that should not be there shows.
    std::string asked() const;
};

/// A client that records the requests that go out through it.
///
/// Not movable: the driver keeps pointers to the record.
class recording_client {
public:
    explicit recording_client(const std::string& url);

    recording_client(const recording_client&) = delete;
    recording_client& operator=(const recording_client&) = delete;

    mongocxx::v1::database database(std::string_view name) { return m_client.database(name); }

    /// In the order of sending. Sending and closing sessions is the driver's own affair and is left
    /// out.
    const std::vector<sent_command>& sent() const { return m_sent; }
    std::vector<std::string> sentNames() const;

    /// The one request that was sent; throws std::runtime_error if there is not just one.
    const sent_command& onlySent() const;

    void forget() { m_sent.clear(); }

private:
    std::vector<sent_command> m_sent;
    mongocxx::v1::client m_client; // destroyed first, for it sends a last request
};

} // namespace test_support
