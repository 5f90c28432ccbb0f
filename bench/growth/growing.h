#pragma once

#include "bench/harness/contest.h"
#include "bench/stores.h"

#include <QString>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// What takes how long when more and more is stored: the same calls with the same answers at each
/// size.
namespace bench {

/// One operation at one size.
struct GrowthStep {
    std::string operation;
    /// That a call is about.
    std::size_t devices = 1;
    Contest contest;
    /// The indexes by which the server finds the records; empty where it looks for none, and where
    /// it is Redis, which has its keys only.
    QString plan;
};

/// One kind of record, or of key, and all that is asked of it.
struct Growing {
    std::string_view name;
    /// Makes the store anew, with nothing in it.
    std::function<void()> empty;
    /// Adds the records `begin` to `end`.
    std::function<void(std::size_t begin, std::size_t end)> grow;
    /// With what is stored by then. A step leaves as many records as it found.
    std::function<std::vector<GrowthStep>()> steps;
};

Growing growingUplinks(Stores& stores);
Growing growingCommands(Stores& stores);
Growing growingValues(Stores& stores);
Growing growingEvents(Stores& stores);
Growing growingStates(Stores& stores);
Growing growingQueues(Stores& stores);
Growing growingClients(Stores& stores);

} // namespace bench
