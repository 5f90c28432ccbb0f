#pragma once

#include "interfaces/idatabase_factory.h"

#include <QPluginLoader>
#include <QString>

namespace host {

/// The storage plug-in, loaded from a file.
///
/// Keep it until everything that its factory built is gone; the MongoDB driver's process-wide
/// instance must have been created before and must live longer. The library stays loaded until the
/// process ends.
class PluginFile {
public:
    /// Throws Failure, naming the file, if it is missing, no plug-in, or a plug-in without the
    /// factory interface.
    explicit PluginFile(const QString& fileName);

    interfaces::IDatabaseFactory& factory() { return *m_factory; }

private:
    QPluginLoader m_loader;
    interfaces::IDatabaseFactory* m_factory = nullptr;
};

} // namespace host
