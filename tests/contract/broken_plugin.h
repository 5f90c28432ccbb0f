#pragma once

#include "interfaces/idatabase_factory.h"

#include <QObject>

/// A driver that has one fault, which KELVRO_FAULT names (broken_plugin.cpp says what each one
/// does), and does everything else as the plug-in of KELVRO_WHOLE_PLUGIN.
class BrokenPlugin : public QObject, public interfaces::IDatabaseFactory {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KELVRO_IID) // of the build
    Q_INTERFACES(interfaces::IDatabaseFactory)

public:
    BrokenPlugin();

    std::shared_ptr<interfaces::IMessagesDatabase>
    CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) override;
    std::shared_ptr<interfaces::IEAVDatabase> CreateEavDatabaseInst(const QJsonObject& settings,
                                                                    QObject* parent) override;
    std::shared_ptr<interfaces::IDriverState> CreateDriverStateInst(const QJsonObject& settings,
                                                                    QObject* parent) override;
    std::shared_ptr<interfaces::IDeviceClientsDatabase>
    CreateClientDatabaseInst(const QJsonObject& settings, QObject* parent) override;

private:
    static interfaces::IDatabaseFactory& whole();
};
