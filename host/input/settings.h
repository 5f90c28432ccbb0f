#pragma once

#include <QJsonObject>
#include <QString>

namespace host {

/// Reads the plug-in's settings from a JSON file:
/// {"url": "mongodb://…", "redis": {"host", "auth", "name", "port", "cleint_db", "state_db",
/// "queue_db"}}. Throws Failure, naming the file, if it cannot be read, is no JSON object, has no
/// "url" text or has one that mongoUrlFault() objects to. Everything else is the plug-in's to
/// judge. A file with a password in it that every user may read gets a warning in the log.
QJsonObject readSettings(const QString& fileName);

/// As readSettings(), but whatever the object holds is left to the caller to judge.
QJsonObject readSettingsObject(const QString& fileName);

/// Whether there is a password in the settings.
bool holdSecrets(const QJsonObject& settings);

/// The settings for the servers that the environment names: MONGODB_URL and
/// REDIS_URL=redis://[:password@]host[:port], with time-outs (withTimeouts()). Throws Failure,
/// naming the variable, if MONGODB_URL is not set or mongoUrlFault() objects to it, or REDIS_URL is
/// no such address; without REDIS_URL the plug-in's defaults stand.
QJsonObject settingsFromEnvironment();

/// The settings from the file, or if no file is named from the first of these that there is: the
/// file that KELVRO_SETTINGS names, the servers that the environment names, and the user's own file
/// kelvrostorage/settings.json in XDG_CONFIG_HOME (~/.config). Throws as those above do, and if
/// there is none.
QJsonObject findSettings(const QString& fileName);

/// The file that findSettings() reads; empty if it takes the servers that the environment names.
/// Throws Failure if there is neither.
QString findSettingsFile(const QString& fileName);

/// What the plug-in reads from the "redis" object of the settings, defaults filled in.
struct RedisSettings {
    QString host;
    QString auth;
    QString name;
    int port = 0;
    int clientDb = 0;
    int stateDb = 0;
    int queueDb = 0;
};
RedisSettings redisSettings(const QJsonObject& settings);

/// The MongoDB connection string of the settings for messages: without user name and password, and
/// without the options, which may be secrets too.
QString serverName(const QJsonObject& settings);

/// HOST:PORT of the settings' Redis server, with the plug-in's defaults.
QString redisName(const QJsonObject& settings);

} // namespace host
