#pragma once

#include "interfaces/idatabase_factory.h"

#include <QObject>

/// The plug-in of KELVRO_SPOILED_PLUGIN, but that the message store does with the message that is
/// saved third what KELVRO_SPOIL says: "lose", "alter" or "repeat".
class SpoilingPlugin : public QObject, public interfaces::IDatabaseFactory {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.kelvrostorage.idatabase_factory")
    Q_INTERFACES(interfaces::IDatabaseFactory)

public:
    std::shared_ptr<interfaces::IMessagesDatabase>
    CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) override;
    std::shared_ptr<interfaces::IEAVDatabase> CreateEavDatabaseInst(const QJsonObject& settings,
                                                                    QObject* parent) override;
    std::shared_ptr<interfaces::IDriverState> CreateDriverStateInst(const QJsonObject& settings,
                                                                    QObject* parent) override;
    std::shared_ptr<interfaces::IDeviceClientsDatabase>
    CreateClientDatabaseInst(const QJsonObject& settings, QObject* parent) override;

private:
    static interfaces::IDatabaseFactory& spoiled();
};
