#include "bench/harness/contest.h"

#include <algorithm>
#include <cmath>
#include <ctime>
#include <stdexcept>

namespace bench {

namespace {

constexpr double settledWithin = 0.03;

double now(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Adds what the block takes to `cost`; returns its records.
std::size_t measureBlock(const Contest& contest, const Side& side, Cost& cost) {
    contest.beforeBlock();
    const double cpuStart = now(CLOCK_PROCESS_CPUTIME_ID);
    const double wallStart = now(CLOCK_MONOTONIC);
    const std::size_t records = side.block();
    cost.wallSecs += now(CLOCK_MONOTONIC) - wallStart;
    cost.cpuSecs += now(CLOCK_PROCESS_CPUTIME_ID) - cpuStart;
    contest.afterBlock();
    return records;
}

/// One block of each side, beginning with the side `first`; returns the records of one.
std::size_t measureTurn(const Contest& contest, std::size_t first, Round& sums) {
    const std::size_t count = contest.sides.size();
    std::vector<std::size_t> records(count);
    for (std::size_t turn = first; turn < first + count; ++turn) {
        const std::size_t side = turn % count;
        records[side] = measureBlock(contest, contest.sides[side], sums[side]);
    }
    if (const auto [least, most] = std::ranges::minmax(records); least != most) {
        throw std::runtime_error("the sides do different work: " + std::to_string(least) + " to " +
                                 std::to_string(most) + " records");
    }
    return records.front();
}

double secsOf(const Round& sums) {
    double secs = 0;
    for (const Cost& cost : sums) {
        secs += cost.wallSecs;
    }
    return secs;
}

/// `blocks` counts those of each side.
Round measureRound(const Contest& contest, double roundSecs, std::size_t& blocks) {
    Round round(contest.sides.size());
    double records = 0;
    do {
        records += static_cast<double>(measureTurn(contest, blocks % contest.sides.size(), round));
        ++blocks;
    } while (secsOf(round) < roundSecs && blocks < contest.maxBlocks);
    for (Cost& cost : round) {
        cost.wallSecs /= records;
        cost.cpuSecs /= records;
    }
    return round;
}

/// As Python's statistics.quantiles() with the method "inclusive", by which bench/run tells them.
std::array<double, 3> quartilesOf(std::vector<double> values) {
    std::ranges::sort(values);
    std::array<double, 3> quartiles{};
    for (std::size_t i = 0; i < quartiles.size(); ++i) {
        const double place = static_cast<double>((values.size() - 1) * (i + 1)) / 4;
        const auto below = static_cast<std::size_t>(place);
        const std::size_t above = std::min(below + 1, values.size() - 1);
        quartiles[i] = std::lerp(values[below], values[above], place - std::floor(place));
    }
    return quartiles;
}

void judge(Measurement& measured) {
    std::vector<double> ratios;
    ratios.reserve(measured.rounds.size());
    for (const Round& round : measured.rounds) {
        ratios.push_back(round[0].wallSecs / round[1].wallSecs);
    }
    measured.ratioQuartiles = quartilesOf(std::move(ratios));
    const auto [first, median, third] = measured.ratioQuartiles;
    measured.settled = std::max(median - first, third - median) <= settledWithin * median;
}

} // namespace

Measurement measure(const Contest& contest, const Effort& effort) {
    Round thrownAway(contest.sides.size());
    measureTurn(contest, 0, thrownAway);

    Measurement measured;
    std::size_t blocks = 0;
    const double end = now(CLOCK_MONOTONIC) + effort.secs;
    const auto goesOn = [&] {
        const std::size_t rounds = measured.rounds.size();
        if (blocks >= contest.maxBlocks) {
            return false;
        }
        if (blocks < contest.minBlocks || rounds < effort.fewestRounds) {
            return true;
        }
        return now(CLOCK_MONOTONIC) < end && (rounds < effort.rounds || !measured.settled);
    };
    while (goesOn()) {
        measured.rounds.push_back(measureRound(contest, effort.roundSecs, blocks));
        judge(measured);
    }
    return measured;
}

} // namespace bench
