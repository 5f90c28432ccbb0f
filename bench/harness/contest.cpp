#include "bench/harness/contest.h"

#include <algorithm>
#include <ctime>
#include <stdexcept>

namespace bench {

namespace {

double now(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

Cost measureBlock(const Contest& contest, const Side& side, std::size_t& records) {
    contest.beforeBlock();
    const double cpuStart = now(CLOCK_PROCESS_CPUTIME_ID);
    const double wallStart = now(CLOCK_MONOTONIC);
    records = side.block();
    const Cost cost{.wallSecs = now(CLOCK_MONOTONIC) - wallStart,
                    .cpuSecs = now(CLOCK_PROCESS_CPUTIME_ID) - cpuStart};
    contest.afterBlock();
    return cost;
}

/// Measures one round, beginning with the side `first`; returns the records of a block.
std::size_t measureRound(const Contest& contest, std::size_t first, Round& round) {
    const std::size_t count = contest.sides.size();
    std::vector<std::size_t> records(count);
    round.resize(count);
    for (std::size_t turn = first; turn < first + count; ++turn) {
        const std::size_t side = turn % count;
        round[side] = measureBlock(contest, contest.sides[side], records[side]);
    }
    if (const auto [least, most] = std::ranges::minmax(records); least != most) {
        throw std::runtime_error("the sides do different work: " + std::to_string(least) + " to " +
                                 std::to_string(most) + " records");
    }
    return records.front();
}

} // namespace

Measurement runRounds(const Contest& contest, double secs, std::size_t minRounds) {
    const auto required = std::min(std::max(minRounds, contest.minRounds), contest.maxRounds);
    Measurement measured;
    Round thrownAway;
    measured.recordsPerBlock = measureRound(contest, 0, thrownAway);

    auto& rounds = measured.rounds;
    const double end = now(CLOCK_MONOTONIC) + secs;
    while (rounds.size() < required ||
           (rounds.size() < contest.maxRounds && now(CLOCK_MONOTONIC) < end)) {
        Round round;
        measureRound(contest, rounds.size() % contest.sides.size(), round);
        rounds.push_back(std::move(round));
    }
    return measured;
}

} // namespace bench
