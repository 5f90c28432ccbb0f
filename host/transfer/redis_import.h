#pragma once

#include "host/servers/direct_redis.h"
#include "host/transfer/store_import.h"

namespace host {

/// Keys for one Redis database, stored one at a time. Borrows the server.
class RedisImport final : public StoreImport {
public:
    RedisImport(DirectRedis& server, int db, Existing existing);

    qint64 records() override;
    void add(const QByteArray& line, qint64 lineNumber) override;
    void flush() override {}
    qint64 missing() override;

private:
    /// Keys that will go by themselves; 0 if the server does not tell.
    qint64 expiring();

    DirectRedis& m_server;
    int m_db;
    Existing m_existing;
    qint64 m_before;
    /// Keys that may have gone meanwhile.
    qint64 m_expiring;
};

} // namespace host
