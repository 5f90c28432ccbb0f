#include "host/session/stores.h"

#include "host/check/attempt.h"
#include "host/input/settings.h"

namespace host {

std::shared_ptr<interfaces::IMessagesDatabase> openMessages(interfaces::IDatabaseFactory& factory,
                                                            const QJsonObject& settings) {
    return attempt(QStringLiteral("opening the message store at ") + serverName(settings),
                   [&] { return factory.CreateMessageDatabaseInst(settings, nullptr); });
}

std::shared_ptr<interfaces::IEAVDatabase> openValues(interfaces::IDatabaseFactory& factory,
                                                     const QJsonObject& settings) {
    return attempt(QStringLiteral("opening the value store at ") + serverName(settings),
                   [&] { return factory.CreateEavDatabaseInst(settings, nullptr); });
}

std::shared_ptr<interfaces::IDriverState> openStates(interfaces::IDatabaseFactory& factory,
                                                     const QJsonObject& settings) {
    return attempt(QStringLiteral("opening the driver state at %1 and %2")
                       .arg(serverName(settings), redisName(settings)),
                   [&] { return factory.CreateDriverStateInst(settings, nullptr); });
}

std::shared_ptr<interfaces::IDeviceClientsDatabase>
openClients(interfaces::IDatabaseFactory& factory, const QJsonObject& settings) {
    return attempt(QStringLiteral("opening the client registry at ") + redisName(settings),
                   [&] { return factory.CreateClientDatabaseInst(settings, nullptr); });
}

} // namespace host
