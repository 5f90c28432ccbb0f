#include "host/settings_file.h"

#include "host/failure.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QRegularExpression>

namespace host {

QJsonObject readSettings(const QString& fileName) {
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
    auto settings = document.object();
    if (settings.value(QLatin1String("url")).toString().isEmpty()) {
        throw Failure(QStringLiteral("the settings file %1 has no \"url\" text").arg(fileName));
    }
    return settings;
}

QString serverName(const QJsonObject& settings) {
    static const QRegularExpression credentials(QStringLiteral("//[^/]*@"));
    return settings.value(QLatin1String("url"))
        .toString()
        .replace(credentials, QStringLiteral("//"));
}

QString redisName(const QJsonObject& settings) {
    const auto redis = settings.value(QLatin1String("redis")).toObject();
    return QStringLiteral("%1:%2")
        .arg(redis.value(QLatin1String("host")).toString(QStringLiteral("127.0.0.1")))
        .arg(redis.value(QLatin1String("port")).toInt(6379));
}

} // namespace host
