#pragma once

#include <QJsonObject>
#include <QString>

namespace test_support {

/// The plug-in's settings with a Redis server on this machine; "url" only if there is one.
inline QJsonObject redisSettings(int port, const QString& password = QString(),
                                 const std::string& mongoUrl = {},
                                 const QString& host = QStringLiteral("127.0.0.1")) {
    QJsonObject settings{
        {QStringLiteral("redis"), QJsonObject{{QStringLiteral("host"), host},
                                              {QStringLiteral("port"), port},
                                              {QStringLiteral("auth"), password}}}};
    if (!mongoUrl.empty()) {
        settings.insert(QStringLiteral("url"), QString::fromStdString(mongoUrl));
    }
    return settings;
}

} // namespace test_support
