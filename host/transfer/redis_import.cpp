#include "host/transfer/redis_import.h"

#include "host/transfer/redis_entry.h"

#include <QDateTime>
#include <QRegularExpression>

#include <algorithm>

namespace host {

RedisImport::RedisImport(DirectRedis& server, int db, Existing existing)
    : m_server(server), m_db(db), m_existing(existing), m_before(records()),
      m_expiring(expiring()) {}

qint64 RedisImport::records() {
    return m_server.run({"DBSIZE"}, m_db).toLongLong();
}

qint64 RedisImport::expiring() {
    const auto info = m_server.ask({"INFO", "keyspace"});
    const QRegularExpression line(QStringLiteral("db%1:keys=\\d+,expires=(\\d+)").arg(m_db));
    return line.match(QString::fromLatin1(info.value_or(QVariant()).toByteArray()))
        .captured(1)
        .toLongLong();
}

void RedisImport::add(const QByteArray& line, qint64 /*lineNumber*/) {
    const auto entry = entryOfLine(line);
    auto& counts = mutableCounts();
    if (entry.expiresMsecs >= 0 && entry.expiresMsecs <= QDateTime::currentMSecsSinceEpoch()) {
        ++counts.expired;
        return;
    }
    const auto stored = readEntry(m_server, m_db, entry.key);
    if (stored == entry) {
        ++counts.same;
    } else if (stored && m_existing == Existing::Keep) {
        ++counts.different;
    } else {
        writeEntry(m_server, m_db, entry);
        ++(stored ? counts.replaced : counts.added);
        m_expiring += entry.expiresMsecs >= 0 ? 1 : 0;
    }
}

qint64 RedisImport::missing() {
    return std::max<qint64>(m_before + counts().added - records() - m_expiring, 0);
}

} // namespace host
