#pragma once

#include "interfaces/idatabase_factory.h"
#include "interfaces/idevice_clients_database.h"
#include "interfaces/idriver_state.h"
#include "interfaces/ieav_database.h"
#include "interfaces/imessages_database.h"

#include <QJsonObject>

#include <memory>

/// The plug-in's stores. Each of these blocks on the store's servers and throws Failure, naming the
/// store and its servers, if it cannot be opened.
namespace host {

std::shared_ptr<interfaces::IMessagesDatabase> openMessages(interfaces::IDatabaseFactory& factory,
                                                            const QJsonObject& settings);
std::shared_ptr<interfaces::IEAVDatabase> openValues(interfaces::IDatabaseFactory& factory,
                                                     const QJsonObject& settings);
std::shared_ptr<interfaces::IDriverState> openStates(interfaces::IDatabaseFactory& factory,
                                                     const QJsonObject& settings);
std::shared_ptr<interfaces::IDeviceClientsDatabase>
openClients(interfaces::IDatabaseFactory& factory, const QJsonObject& settings);

} // namespace host
