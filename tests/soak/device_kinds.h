#pragma once

#include "interfaces/idatabase_factory.h"
#include "tests/soak/kind.h"

#include <QJsonObject>

#include <memory>
#include <vector>

namespace soak {

/// Driver states and downlink queues, both made durable with every call, each with a database
/// object of its own.
std::vector<std::unique_ptr<Kind>> deviceKinds(interfaces::IDatabaseFactory& factory,
                                               const QJsonObject& settings);

} // namespace soak
