#pragma once

#include "interfaces/idatabase_factory.h"
#include "tests/contract/plugin_file.h"

#include <QJsonObject>

#include <stdexcept>
#include <string>

/// The plug-in as a host has it after loading. Unloaded with nothing, as most hosts do.
class LoadedPlugin {
public:
    QObject* root() {
        QObject* object = m_loader.instance();
        if (object == nullptr) {
            throw std::runtime_error(m_loader.errorString().toStdString());
        }
        return object;
    }

    interfaces::IDatabaseFactory* factory() {
        auto* factory = qobject_cast<interfaces::IDatabaseFactory*>(root());
        if (factory == nullptr) {
            throw std::runtime_error("the plug-in's object is no database factory");
        }
        return factory;
    }

private:
    QPluginLoader m_loader{pluginFile()};
};

/// Settings with this MongoDB server and no others.
inline QJsonObject settingsFor(const std::string& mongoUrl) {
    return {{QStringLiteral("url"), QString::fromStdString(mongoUrl)}};
}
