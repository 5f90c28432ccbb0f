#include "contract/settings.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonParseError>

#include <stdexcept>

namespace contract {

QJsonObject readSettings(const QString& fileName) {
    const auto fail = [&](const QString& why) {
        throw std::runtime_error(
            QStringLiteral("the settings file %1 %2").arg(fileName, why).toStdString());
    };
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        fail(QStringLiteral("cannot be read: ") + file.errorString());
    }
    QJsonParseError error{};
    const auto document = QJsonDocument::fromJson(file.readAll(), &error);
    if (error.error != QJsonParseError::NoError) {
        fail(QStringLiteral("is not JSON: %1 at byte %2")
                 .arg(error.errorString())
                 .arg(error.offset + 1));
    }
    if (!document.isObject()) {
        fail(QStringLiteral("is not a JSON object"));
    }
    return document.object();
}

} // namespace contract
