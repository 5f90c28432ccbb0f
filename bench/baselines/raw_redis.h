#pragma once

#include "host/input/settings.h"

#include <hiredis/hiredis.h>

#include <QByteArray>
#include <QList>

#include <memory>
#include <string>

namespace bench {

/// A bare hiredis connection: what the Redis stores are measured against.
///
/// Owns its socket; one thread at a time. Throws std::runtime_error when there is no answer or the
/// answer is an error.
class RawRedis {
public:
    struct Release {
        void operator()(redisReply* reply) const noexcept { ::freeReplyObject(reply); }
        void operator()(redisContext* context) const noexcept { ::redisFree(context); }
    };
    using Reply = std::unique_ptr<redisReply, Release>;

    explicit RawRedis(const host::RedisSettings& settings);

    /// The bytes of a command as they are sent.
    static std::string wire(const QList<QByteArray>& command);

    /// Sends a command that is ready, and takes the answer.
    Reply send(const std::string& wire);
    Reply run(const QList<QByteArray>& command) { return send(wire(command)); }

    void select(int db) { run({"SELECT", QByteArray::number(db)}); }

private:
    std::unique_ptr<redisContext, Release> m_context;
};

} // namespace bench
