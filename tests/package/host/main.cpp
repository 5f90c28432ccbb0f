#include "interfaces/idatabase_factory.h"
#include "interfaces/ieav_repository.h"
#include "interfaces/iul_app_message_repository.h"

#include <QPluginLoader>

#include <iostream>

/// Loads the installed plug-in and casts its object: 0 if that works.
int main() {
    QPluginLoader loader{QStringLiteral(PLUGIN_FILE)};
    QObject* root = loader.instance();
    if (root == nullptr) {
        std::cerr << loader.errorString().toStdString() << '\n';
        return 1;
    }
    if (qobject_cast<interfaces::IDatabaseFactory*>(root) == nullptr) {
        std::cerr << "the object of " PLUGIN_FILE " is no database factory\n";
        return 1;
    }
    std::cout << "loaded " PLUGIN_FILE "\n";
    return 0;
}
