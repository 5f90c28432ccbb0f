#pragma once

#include <QJsonObject>
#include <QString>

#include <map>

namespace host {

/// The Redis databases of the settings by the roles that they have: "client", "queue" and "state",
/// or fewer, as "queue+state", where one database has more than one.
std::map<QString, int> redisDatabases(const QJsonObject& settings);

/// The database of these settings that has the roles that `name` names. Throws Failure if these are
/// in more than one.
int databaseOfRoles(const QJsonObject& settings, const QString& name);

} // namespace host
