#pragma once

#include <gtest/gtest.h>

#include <QFile>
#include <QPluginLoader>
#include <QString>
#include <QTemporaryDir>

/// The built plug-in, known as a file only. KELVROSTORAGE_PLUGIN puts another build to these tests.
inline QString pluginFile() {
    const QString other = qEnvironmentVariable("KELVROSTORAGE_PLUGIN");
    return other.isEmpty() ? QStringLiteral(KELVRO_PLUGIN_FILE) : other;
}

/// A copy of it under a name of its own, which no other test has loaded.
class PluginCopy : public testing::Test {
protected:
    PluginCopy() { EXPECT_TRUE(QFile::copy(pluginFile(), copy)) << pluginFile().toStdString(); }

    QTemporaryDir folder;
    QString copy = folder.filePath(QStringLiteral("libcopy.so"));
};
