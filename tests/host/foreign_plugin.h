#pragma once

#include <QObject>

/// A Qt plug-in that has nothing to do with storage.
class ForeignPlugin : public QObject {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.kelvrostorage.tests.foreign")
};
