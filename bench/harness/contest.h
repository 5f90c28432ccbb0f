#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

/// One way to do a block of work.
struct Side {
    std::string name;
    /// Does one block and returns how many records it handled.
    std::function<std::size_t()> block;
};

/// Two or more ways to do the same work. The hooks are not measured.
struct Contest {
    /// The first is the one that all others are compared with.
    std::vector<Side> sides;
    std::function<void()> beforeBlock = [] {};
    /// Throws if the block did not do what it should have.
    std::function<void()> afterBlock = [] {};
    /// Rounds without which the work is not complete.
    std::size_t minRounds = 1;
    std::size_t maxRounds = 2000;
};

/// What one block of work took: the clock on the wall, and the processor time of this process with
/// all its threads, which leaves out the servers.
struct Cost {
    double wallSecs = 0;
    double cpuSecs = 0;
};

/// One block of each side, run one right after the other; in the order of the sides.
using Round = std::vector<Cost>;

struct Measurement {
    std::size_t recordsPerBlock = 0;
    std::vector<Round> rounds;
};

/// Runs rounds until `secs` have passed, those of the hooks included, but at least `minRounds` and
/// those that the contest needs. Every round begins with another side, so that none always has the
/// warmer caches; one round ahead of the measured ones is thrown away. Throws std::runtime_error if
/// the sides handle different numbers of records.
Measurement runRounds(const Contest& contest, double secs, std::size_t minRounds);

} // namespace bench
