#include "bench/baselines/raw_redis.h"

#include <stdexcept>
#include <vector>

namespace bench {

RawRedis::RawRedis(const host::RedisSettings& settings)
    : m_context(::redisConnect(settings.host.toUtf8().constData(), settings.port)) {
    if (m_context == nullptr || m_context->err != 0) {
        throw std::runtime_error("cannot reach the Redis server: " +
                                 std::string(m_context ? m_context->errstr : "no memory"));
    }
    if (!settings.auth.isEmpty()) {
        run({"AUTH", settings.auth.toUtf8()});
    }
}

std::string RawRedis::wire(const QList<QByteArray>& command) {
    std::vector<const char*> starts;
    std::vector<std::size_t> sizes;
    for (const QByteArray& part : command) {
        starts.push_back(part.constData());
        sizes.push_back(static_cast<std::size_t>(part.size()));
    }
    char* formatted = nullptr;
    const long long length =
        ::redisFormatCommandArgv(&formatted, command.size(), starts.data(), sizes.data());
    if (length < 0) {
        throw std::runtime_error("cannot format a Redis command");
    }
    const std::string bytes(formatted, static_cast<std::size_t>(length));
    ::redisFreeCommand(formatted);
    return bytes;
}

RawRedis::Reply RawRedis::send(const std::string& wire) {
    void* raw = nullptr;
    if (::redisAppendFormattedCommand(m_context.get(), wire.data(), wire.size()) != REDIS_OK ||
        ::redisGetReply(m_context.get(), &raw) != REDIS_OK) {
        throw std::runtime_error("no answer from Redis: " + std::string(m_context->errstr));
    }
    Reply reply(static_cast<redisReply*>(raw));
    if (reply->type == REDIS_REPLY_ERROR) {
        throw std::runtime_error("Redis refuses: " + std::string(reply->str, reply->len));
    }
    return reply;
}

} // namespace bench
