#include "host/demo/demo_stores.h"

namespace host {

DemoStores::DemoStores(interfaces::IDatabaseFactory& factory, const QJsonObject& settings)
    : messages(openMessages(factory, settings)), values(openValues(factory, settings)),
      states(openStates(factory, settings)), statesAfterwards(openStates(factory, settings)),
      clients(openClients(factory, settings)) {}

} // namespace host
