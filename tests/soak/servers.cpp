#include "tests/soak/servers.h"

#include "host/input/mongo_timeouts.h"
#include "tests/support/qt_literals.h"

namespace soak {

using namespace test_support::literals;

namespace {

QStringList redisOptions(const ServerOptions& options) {
    return options.redisKeepsData
               ? QStringList{"--appendonly"_q, "yes"_q, "--appendfsync"_q, "always"_q}
               : QStringList{};
}

} // namespace

Servers::Servers(const ServerOptions& options)
    : m_redis(redisOptions(options)), m_ferretdb(m_postgresql, {.urlOptions = options.urlOptions}) {
    constexpr int dbOfOthers = 1;
    m_redis.run({"EVAL",
                 "for i = 1, tonumber(ARGV[1]) do "
                 "redis.call('SET', 'other:' .. i, string.rep('x', 100)) end",
                 "0", QByteArray::number(options.otherKeys)},
                dbOfOthers);
}

void Servers::kill(Side side) {
    switch (side) {
    case Side::Redis:
        return m_redis.kill();
    case Side::Ferretdb:
        return m_ferretdb.kill();
    case Side::Postgresql:
        return m_postgresql.kill();
    }
}

void Servers::start(Side side) {
    switch (side) {
    case Side::Redis:
        return m_redis.start();
    case Side::Ferretdb:
        return m_ferretdb.start();
    case Side::Postgresql:
        return m_postgresql.start();
    }
}

QJsonObject Servers::settings() const {
    return {{"url"_q, host::withTimeouts(QString::fromStdString(m_ferretdb.url()))},
            {"redis"_q, QJsonObject{{"port"_q, m_redis.port()}}}};
}

} // namespace soak
