#include "host/session/installation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace host {

namespace {

/// A path from the folder of the running program, so that an installation can be moved.
QString fromProgram(const QString& path) {
    const QFileInfo program(QFile::symLinkTarget(QStringLiteral("/proc/self/exe")));
    return QDir::cleanPath(program.path() % QLatin1Char('/') % path);
}

} // namespace

QString installedPlugin() {
    return fromProgram(QStringLiteral(KELVRO_PLUGIN_FROM_PROGRAMS "/libkelvrostorage.so"));
}

QString dataFile(const QString& name) {
    return fromProgram(QStringLiteral(KELVRO_DATA_FROM_PROGRAMS "/") % name);
}

QString programVersion() {
    return QStringLiteral(KELVRO_PROGRAM_VERSION);
}

} // namespace host
