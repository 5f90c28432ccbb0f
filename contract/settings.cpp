#include "contract/settings.h"

#include "host/input/settings.h"

namespace contract {

QJsonObject findSettings(const QString& fileName) {
    const auto file = host::findSettingsFile(fileName);
    return file.isEmpty() ? host::settingsFromEnvironment() : host::readSettingsObject(file);
}

} // namespace contract
