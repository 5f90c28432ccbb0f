#pragma once

#include "interfaces/idatabase_factory.h"
#include "tests/soak/kind.h"

#include <QJsonObject>

#include <memory>
#include <vector>

namespace soak {

/// Uplink messages, values (in lists), events and downlink commands, each with a database object of
/// its own.
std::vector<std::unique_ptr<Kind>> recordKinds(interfaces::IDatabaseFactory& factory,
                                               const QJsonObject& settings);

} // namespace soak
