#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace bench {

/// What one block of work took: the clock on the wall, and the processor time of this process with
/// all its threads, which leaves out the servers.
struct Cost {
    double wallSecs = 0;
    double cpuSecs = 0;
};

/// One block of each side, run one right after the other.
struct Pair {
    Cost subject;
    Cost baseline;
};

/// Two ways to do the same work.
///
/// A side runs one block and returns how many records it handled. The hooks are not measured.
struct Contest {
    std::function<std::size_t()> subject;
    std::function<std::size_t()> baseline;
    std::function<void()> beforeBlock = [] {};
    /// Throws if the block did not do what it should have.
    std::function<void()> afterBlock = [] {};
    /// Pairs without which the work is not complete.
    int minPairs = 1;
    int maxPairs = 2000;
};

/// Runs pairs until `secs` have passed, those of the hooks included, but at least `minPairs` and
/// those that the contest needs. The first block of every other pair is the baseline's, so neither
/// side always has the warmer caches; one pair ahead of the measured ones is thrown away.
/// Throws std::runtime_error if the sides handle different numbers of records.
std::vector<Pair> runPairs(const Contest& contest, double secs, int minPairs);

} // namespace bench
