#pragma once

#include <chrono>
#include <string>

namespace soak {

/// How long a call of the plug-in that writes may take by the time-outs of the connection string,
/// and with Redis in it by those of the Redis client, which are fixed.
///
/// MongoDB: finding a server (serverSelectionTimeoutMS), connecting to it, which is tried twice
/// (connectTimeoutMS each), and one request (socketTimeoutMS). What the connection string leaves
/// out takes the MongoDB driver's default. Redis: connecting and one command.
///
/// For connections in steady use: one that has been idle for five seconds is first asked whether it
/// still lives, for up to another socketTimeoutMS.
std::chrono::milliseconds callBound(const std::string& url, bool usesRedis);

/// Given to a busy machine on top of that.
inline constexpr std::chrono::seconds boundSlack{5};

} // namespace soak
