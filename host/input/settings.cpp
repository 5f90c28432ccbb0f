#include "host/input/settings.h"

#include "host/failure.h"
#include "host/input/mongo_timeouts.h"
#include "host/input/mongo_url.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QUrl>

namespace host {

namespace {

QJsonObject parseRedisUrl(const QString& text) {
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.scheme() != QLatin1String("redis") || url.host().isEmpty()) {
        // The text may hold a password.
        throw Failure(QStringLiteral("REDIS_URL is not of the form redis://[:password@]host:port"));
    }
    QJsonObject redis{{QStringLiteral("host"), url.host()}};
    if (url.port() != -1) {
        redis.insert(QStringLiteral("port"), url.port());
    }
    if (!url.password().isEmpty()) {
        redis.insert(QStringLiteral("auth"), url.password(QUrl::FullyDecoded));
    }
    return redis;
}

/// Throws Failure, which begins with `origin`, if the connection string must not be handed on.
void checkMongoUrl(const QString& url, const QString& origin) {
    if (const auto fault = mongoUrlFault(url); !fault.isEmpty()) {
        throw Failure(origin + QLatin1Char(' ') + fault);
    }
}

} // namespace

bool holdSecrets(const QJsonObject& settings) {
    return settings.value(QLatin1String("url")).toString().contains(QLatin1Char('@')) ||
           !redisSettings(settings).auth.isEmpty();
}

QJsonObject readSettingsObject(const QString& fileName) {
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        throw Failure(QStringLiteral("cannot read the settings file %1: %2")
                          .arg(fileName, file.errorString()));
    }
    QJsonParseError error{};
    const auto document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError) {
        throw Failure(QStringLiteral("the settings file %1 is not JSON: %2 at byte %3")
                          .arg(fileName, error.errorString())
                          .arg(error.offset + 1));
    }
    if (!document.isObject()) {
        throw Failure(QStringLiteral("the settings file %1 is not a JSON object").arg(fileName));
    }
    return document.object();
}

QJsonObject readSettings(const QString& fileName) {
    auto settings = readSettingsObject(fileName);
    const auto url = settings.value(QLatin1String("url")).toString();
    if (url.isEmpty()) {
        throw Failure(QStringLiteral("the settings file %1 has no \"url\" text").arg(fileName));
    }
    checkMongoUrl(url, QStringLiteral("the \"url\" of the settings file %1").arg(fileName));
    if (QFile::permissions(fileName).testFlag(QFileDevice::ReadOther) && holdSecrets(settings)) {
        qWarning("the settings file %s has a password in it, and every user may read it",
                 qUtf8Printable(fileName));
    }
    return settings;
}

QJsonObject settingsFromEnvironment() {
    const auto mongo = qEnvironmentVariable("MONGODB_URL");
    if (mongo.isEmpty()) {
        throw Failure(QStringLiteral("neither a settings file (--settings) nor MONGODB_URL says "
                                     "where the servers are"));
    }
    checkMongoUrl(mongo, QStringLiteral("MONGODB_URL"));
    QJsonObject settings{{QStringLiteral("url"), withTimeouts(mongo)}};
    if (const auto redis = qEnvironmentVariable("REDIS_URL"); !redis.isEmpty()) {
        settings.insert(QStringLiteral("redis"), parseRedisUrl(redis));
    }
    return settings;
}

QJsonObject findSettings(const QString& fileName) {
    const auto file = findSettingsFile(fileName);
    return file.isEmpty() ? settingsFromEnvironment() : readSettings(file);
}

QString findSettingsFile(const QString& fileName) {
    if (!fileName.isEmpty()) {
        return fileName;
    }
    if (const auto named = qEnvironmentVariable("KELVRO_SETTINGS"); !named.isEmpty()) {
        return named;
    }
    if (!qEnvironmentVariableIsEmpty("MONGODB_URL")) {
        return {};
    }
    const QString own = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
                        QStringLiteral("/kelvrostorage/settings.json");
    if (!QFile::exists(own)) {
        throw Failure(QStringLiteral("nothing says where the servers are: neither --settings, "
                                     "KELVRO_SETTINGS or MONGODB_URL, nor a file %1")
                          .arg(own));
    }
    return own;
}

RedisSettings redisSettings(const QJsonObject& settings) {
    const auto redis = settings.value(QLatin1String("redis")).toObject();
    return {
        .host = redis.value(QLatin1String("host")).toString(QStringLiteral("127.0.0.1")),
        .auth = redis.value(QLatin1String("auth")).toString(),
        .name = redis.value(QLatin1String("name")).toString(),
        .port = redis.value(QLatin1String("port")).toInt(6379),
        // The key is spelled so.
        .clientDb = redis.value(QLatin1String("cleint_db")).toInt(2),
        .stateDb = redis.value(QLatin1String("state_db")).toInt(0),
        .queueDb = redis.value(QLatin1String("queue_db")).toInt(7),
    };
}

QString serverName(const QJsonObject& settings) {
    static const QRegularExpression credentials(QStringLiteral("//.*@"));
    return settings.value(QLatin1String("url"))
        .toString()
        .section(QLatin1Char('?'), 0, 0)
        .replace(credentials, QStringLiteral("//"));
}

QString redisName(const QJsonObject& settings) {
    const auto redis = redisSettings(settings);
    return redis.host + QLatin1Char(':') + QString::number(redis.port);
}

} // namespace host
