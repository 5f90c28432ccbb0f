#pragma once

#include "host/servers/direct_redis.h"

#include <QByteArray>
#include <QList>

#include <optional>

namespace host {

/// One key of a Redis database with all that is behind it.
struct RedisEntry {
    QByteArray key;
    /// As TYPE gives it; or "dump" for a type that has no form of its own here.
    // NOLINTBEGIN(readability-redundant-member-init): GCC warns where one without is left out.
    QByteArray type = {};
    /// string, dump: the one value. set: its members. hash: each field and its value. list: its
    /// elements. zset: each member and its score, in the order of the scores.
    QList<QByteArray> parts = {};
    // NOLINTEND(readability-redundant-member-init)
    /// When it goes, in milliseconds since the epoch; -1 if it stays.
    qint64 expiresMsecs = -1;

    /// The order of what has none does not count.
    friend bool operator==(const RedisEntry& one, const RedisEntry& other);
};

/// The entry as a line of an export, without the line's end: a JSON object with "key", "type",
/// "value" (a text or a list of texts) and, if it goes, "expires_ms". What is no UTF-8 text is an
/// object {"base64": "…"}.
QByteArray entryLine(const RedisEntry& entry);

/// Whether part of the line is in base64.
bool hasBase64(const QByteArray& line);

/// Throws Failure, with the reason alone, for a line that is none.
RedisEntry entryOfLine(const QByteArray& line);

/// What is behind a key; nothing if there is no such key. Throws as DirectRedis::run().
std::optional<RedisEntry> readEntry(DirectRedis& server, int db, const QByteArray& key);

/// Puts an entry in the place of whatever the key holds. A server or a program that is killed
/// meanwhile leaves the key as it was or as it shall be, and perhaps one named
/// "kelvro-host:import". Throws as DirectRedis::run().
void writeEntry(DirectRedis& server, int db, const RedisEntry& entry);

} // namespace host
