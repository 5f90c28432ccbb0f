#pragma once

#include <QString>

/// Where the program's own files are.
namespace host {

/// The plug-in that was installed with this program.
QString installedPlugin();

/// One of the files with real meters' telegrams and readings, by its name.
QString dataFile(const QString& name);

QString programVersion();

} // namespace host
