#include "host/demo/demo_stores.h"

#include "host/check/attempt.h"
#include "host/input/settings.h"

namespace host {

namespace {

template <class Create>
auto open(const QString& what, Create create) {
    return attempt(QStringLiteral("opening ") + what, create);
}

} // namespace

DemoStores::DemoStores(interfaces::IDatabaseFactory& factory, const QJsonObject& settings) {
    const auto mongo = serverName(settings);
    const auto redis = redisName(settings);
    const auto openStates = [&] {
        return open(QStringLiteral("the driver state at %1 and %2").arg(mongo, redis),
                    [&] { return factory.CreateDriverStateInst(settings, nullptr); });
    };
    messages = open(QStringLiteral("the message store at ") + mongo,
                    [&] { return factory.CreateMessageDatabaseInst(settings, nullptr); });
    values = open(QStringLiteral("the value store at ") + mongo,
                  [&] { return factory.CreateEavDatabaseInst(settings, nullptr); });
    states = openStates();
    statesAfterwards = openStates();
    clients = open(QStringLiteral("the client registry at ") + redis,
                   [&] { return factory.CreateClientDatabaseInst(settings, nullptr); });
}

} // namespace host
