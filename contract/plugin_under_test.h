#pragma once

#include "interfaces/idatabase_factory.h"

#include <QFileInfo>
#include <QObject>
#include <QPluginLoader>
#include <QString>

namespace contract {

/// The plug-in file, loaded when something of it is first asked for.
class PluginUnderTest {
public:
    explicit PluginUnderTest(const QString& file) : m_file(QFileInfo(file).absoluteFilePath()) {}

    const QString& file() const { return m_file; }

    /// The plug-in's root object. Throws RuleBroken if the file cannot be loaded.
    QObject& root();

    /// Throws RuleBroken also if the root object is no factory.
    interfaces::IDatabaseFactory& factory();

private:
    QString m_file;
    QPluginLoader m_loader;
};

} // namespace contract
