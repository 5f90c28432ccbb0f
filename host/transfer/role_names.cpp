#include "host/transfer/role_names.h"

#include "host/failure.h"
#include "host/input/settings.h"
#include "host/servers/direct_redis.h"

#include <QStringList>

#include <set>

namespace host {

std::map<QString, int> redisDatabases(const QJsonObject& settings) {
    std::map<int, QStringList> roles;
    for (const auto& role : redisRoles(redisSettings(settings))) {
        roles[role.db].append(role.name);
    }
    std::map<QString, int> databases;
    for (auto& [db, names] : roles) {
        names.sort();
        databases.insert({names.join(QLatin1Char('+')), db});
    }
    return databases;
}

int databaseOfRoles(const QJsonObject& settings, const QString& name) {
    const auto names = name.split(QLatin1Char('+'));
    std::set<int> databases;
    for (const auto& role : redisRoles(redisSettings(settings))) {
        if (names.contains(role.name)) {
            databases.insert(role.db);
        }
    }
    if (databases.size() != 1) {
        throw Failure(QStringLiteral("the export has the Redis keys of %1 in one database, and the "
                                     "settings do not: import with settings that do")
                          .arg(name));
    }
    return *databases.begin();
}

} // namespace host
