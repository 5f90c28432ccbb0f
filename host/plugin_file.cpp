#include "host/plugin_file.h"

#include "host/failure.h"

#include <QFileInfo>

namespace host {

PluginFile::PluginFile(const QString& fileName) {
    const QFileInfo file(fileName);
    if (!file.isFile()) {
        throw Failure(QStringLiteral("there is no plug-in file %1").arg(fileName));
    }
    m_loader.setFileName(file.absoluteFilePath());
    auto* const root = m_loader.instance();
    if (root == nullptr) {
        throw Failure(QStringLiteral("cannot load the plug-in file %1: %2")
                          .arg(fileName, m_loader.errorString()));
    }
    m_factory = qobject_cast<interfaces::IDatabaseFactory*>(root);
    if (m_factory == nullptr) {
        throw Failure(
            QStringLiteral("the plug-in file %1 does not offer the interface %2")
                .arg(fileName,
                     QLatin1String(qobject_interface_iid<interfaces::IDatabaseFactory*>())));
    }
}

} // namespace host
