#pragma once

#include "interfaces/idatabase_factory.h"
#include "tests/soak/call_log.h"
#include "tests/soak/kind.h"
#include "tests/soak/servers.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace soak {

struct SoakOptions {
    ServerOptions servers;
    /// Of each side, those of all sides together included.
    int kills = 100;
    /// Ends the run after that, whatever is left of the kills.
    std::optional<std::chrono::minutes> atMost;
    std::uint32_t seed = 0;
};

/// What became of the records of one kind.
struct KindResult {
    QString name;
    bool usesRedis = false;
    CallFigures calls;
    Findings findings;
    /// How long a call may take by the time-outs of the settings.
    std::chrono::milliseconds bound{0};

    bool keepsItsPromises() const;
};

struct SoakResult {
    std::uint32_t seed = 0;
    std::map<Side, int> kills;
    std::chrono::seconds took{0};
    std::string url;
    std::vector<KindResult> kinds;

    bool keepsItsPromises() const;
};

/// Stores records of all kinds, each on a thread of its own, while it kills the servers and starts
/// them again, and reads everything back at the end.
///
/// `isToEnd` is asked now and then; what was found until then is the result. `say` gets a line
/// about the progress.
SoakResult runSoak(interfaces::IDatabaseFactory& factory, const SoakOptions& options,
                   const std::function<bool()>& isToEnd,
                   const std::function<void(const std::string&)>& say);

} // namespace soak
