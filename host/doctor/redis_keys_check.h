#pragma once

#include "host/doctor/finding.h"
#include "host/servers/direct_redis.h"

#include <QByteArray>
#include <QString>

namespace host {

/// The role that a key's form belongs to: "client" (dev:clients:17, dev:properties:17), "queue"
/// (17), "state" (anything:17, also :17); empty for any other form.
QString roleOfKey(const QByteArray& key);

/// Goes through all keys of the databases that the settings name: keys that another database should
/// have, that are nobody's, of a type that the plug-in cannot read, or that will expire. And looks
/// into the server's other databases for keys of the plug-in's. Throws as DirectRedis::run().
Findings redisKeyFindings(DirectRedis& server, const std::vector<RedisRole>& roles);

} // namespace host
