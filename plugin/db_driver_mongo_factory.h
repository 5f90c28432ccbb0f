#pragma once

#include "interfaces/idatabase_factory.h"

#include <QObject>

/// The plug-in's root object: builds each storage object from settings, hands it over and keeps
/// nothing. See interfaces::IDatabaseFactory for the settings and for what a host may rely on.
///
/// In no namespace: hosts find it under its bare class name in the plug-in's metadata.
class DbDriverMongoFactory final : public QObject, public interfaces::IDatabaseFactory {
    Q_OBJECT
    Q_PLUGIN_METADATA(IID "org.kelvrostorage.idatabase_factory")
    Q_INTERFACES(interfaces::IDatabaseFactory)

public:
    /// Registers the Redis client's types with Qt's meta-type system, so that a client can pass
    /// them through queued connections. A name under which the host has registered another type
    /// before stays the host's; a warning says so, and nothing here depends on it.
    DbDriverMongoFactory();

    std::shared_ptr<interfaces::IMessagesDatabase>
    CreateMessageDatabaseInst(const QJsonObject& settings, QObject* parent) override;

    std::shared_ptr<interfaces::IEAVDatabase> CreateEavDatabaseInst(const QJsonObject& settings,
                                                                    QObject* parent) override;

    std::shared_ptr<interfaces::IDriverState> CreateDriverStateInst(const QJsonObject& settings,
                                                                    QObject* parent) override;

    std::shared_ptr<interfaces::IDeviceClientsDatabase>
    CreateClientDatabaseInst(const QJsonObject& settings, QObject* parent) override;
};
