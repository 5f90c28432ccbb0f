#include "tests/soak/call_bound.h"

#include "redisclient/redisclient.h"

#include <mongocxx/v1/uri.hpp>

namespace soak {

std::chrono::milliseconds callBound(const std::string& url, bool usesRedis) {
    constexpr int defaultServerSelectionMsecs = 30'000;
    constexpr int defaultConnectMsecs = 10'000;
    constexpr int defaultSocketMsecs = 300'000;
    const mongocxx::v1::uri uri{url};
    int msecs = uri.server_selection_timeout_ms().value_or(defaultServerSelectionMsecs) +
                2 * uri.connect_timeout_ms().value_or(defaultConnectMsecs) +
                uri.socket_timeout_ms().value_or(defaultSocketMsecs);
    if (usesRedis) {
        msecs += RedisClient::ConnectionConfig::defaultConnectTimeoutMsecs +
                 RedisClient::ConnectionConfig::defaultCommandTimeoutMsecs;
    }
    return std::chrono::milliseconds(msecs);
}

} // namespace soak
