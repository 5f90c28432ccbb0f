#include "host/session/installation.h"

namespace host {

QString installedPlugin() {
    return QStringLiteral(KELVRO_PLUGIN_PATH);
}

QString dataFile(const QString& name) {
    return QStringLiteral(KELVRO_HOST_DATA_DIR "/") + name;
}

QString programVersion() {
    return QStringLiteral(KELVRO_HOST_VERSION);
}

} // namespace host
