#pragma once

#include <QPluginLoader>
#include <QString>

/// The built plug-in, known as a file only.
inline QString pluginFile() {
    // The environment's goes first, so that any build can be put to these tests.
    return qEnvironmentVariable("KELVROSTORAGE_PLUGIN", QStringLiteral(KELVRO_PLUGIN_FILE));
}
