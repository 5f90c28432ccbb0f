#pragma once

#include "host/session/stores.h"

namespace host {

/// The plug-in's stores, opened.
struct DemoStores {
    /// Throws Failure, naming the store and its server, if one cannot be opened.
    DemoStores(interfaces::IDatabaseFactory& factory, const QJsonObject& settings);

    std::shared_ptr<interfaces::IMessagesDatabase> messages;
    std::shared_ptr<interfaces::IEAVDatabase> values;
    std::shared_ptr<interfaces::IDriverState> states;
    /// A second object: it shows what survives the first one's memory.
    std::shared_ptr<interfaces::IDriverState> statesAfterwards;
    std::shared_ptr<interfaces::IDeviceClientsDatabase> clients;
};

} // namespace host
