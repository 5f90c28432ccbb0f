#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <limits>
#include <string>
#include <vector>

namespace bench {

/// Does one block of work and returns how many records it handled.
using Block = std::function<std::size_t()>;

/// One way to do a block of work.
struct Side {
    std::string name;
    Block block;
};

/// Two or more ways to do the same work. The hooks are not measured.
struct Contest {
    /// The first is the one that all others are compared with; the second has the ratio that is
    /// measured until it is settled.
    std::vector<Side> sides;
    std::function<void()> beforeBlock = [] {};
    /// Throws if the block did not do what it should have.
    std::function<void()> afterBlock = [] {};
    /// Blocks of each side without which the work is not complete, and those that there is work
    /// for.
    std::size_t minBlocks = 1;
    std::size_t maxBlocks = std::numeric_limits<std::size_t>::max();
};

/// How long a contest goes on.
struct Effort {
    /// Rounds that are made unless the time is up, and those that are made all the same.
    std::size_t rounds = 30;
    std::size_t fewestRounds = 5;
    /// What a round takes at least: short blocks are repeated in it, the sides in turn.
    double roundSecs = 0.1;
    /// The whole contest, its hooks included.
    double secs = 6;
};

/// What a record took: the clock on the wall, and the processor time of this process with all its
/// threads, which leaves out the servers.
struct Cost {
    double wallSecs = 0;
    double cpuSecs = 0;
};

/// What a record took on each side; in the order of the sides.
using Round = std::vector<Cost>;

struct Measurement {
    std::vector<Round> rounds;
    /// Of the wall ratio of the first two sides in each round: first, median, third.
    std::array<double, 3> ratioQuartiles{};
    /// Both outer quartiles are within 3 % of the median.
    bool settled = false;
};

/// Measures round after round until the ratio has settled or the time is up. In a round, blocks of
/// all sides run one right after the other, every time beginning with another side, so that none
/// always has the warmer caches. One block of each side ahead is thrown away. Throws
/// std::runtime_error if the sides handle different numbers of records.
Measurement measure(const Contest& contest, const Effort& effort);

} // namespace bench
