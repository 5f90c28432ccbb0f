#pragma once

#include "host/doctor/finding.h"

#include <QByteArray>
#include <QHash>
#include <QJsonObject>

namespace host {

/// What INFO and CONFIG GET say, by name.
using RedisFacts = QHash<QByteArray, QByteArray>;

/// Reads the answer of INFO.
RedisFacts redisInfo(const QByteArray& text);

/// Whether the server would drop keys, or refuse writes, for want of memory.
Findings redisMemoryFindings(const RedisFacts& info);

/// Whether keys survive the server's end. `config` has "save" and "appendfsync", or nothing if the
/// server does not let this user look.
Findings redisPersistenceFindings(const RedisFacts& info, const RedisFacts& config);

/// Looks at the Redis server of the settings: whether it is there, its clock, how it keeps its
/// data, and all keys. Only reads. Blocks; throws nothing: what fails is a finding.
Findings redisFindings(const QJsonObject& settings);

} // namespace host
