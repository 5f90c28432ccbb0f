#pragma once

#include <QJsonObject>
#include <QString>

namespace host {

/// Reads the plug-in's settings from a JSON file:
/// {"url": "mongodb://…", "redis": {"host", "auth", "name", "port", "cleint_db", "state_db",
/// "queue_db"}}. Throws Failure, naming the file, if it cannot be read, is no JSON object or has no
/// "url" text. Everything else is the plug-in's to judge.
QJsonObject readSettings(const QString& fileName);

/// The MongoDB connection string of the settings without user name and password, for messages.
QString serverName(const QJsonObject& settings);

/// HOST:PORT of the settings' Redis server, with the plug-in's defaults.
QString redisName(const QJsonObject& settings);

} // namespace host
