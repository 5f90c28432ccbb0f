#include "bench/contest.h"

#include <algorithm>
#include <ctime>
#include <stdexcept>
#include <string>

namespace bench {

namespace {

double now(clockid_t clock) {
    timespec time{};
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

struct Block {
    Cost cost;
    std::size_t records = 0;
};

Block measure(const Contest& contest, const std::function<std::size_t()>& side) {
    contest.beforeBlock();
    Block block;
    const double cpuStart = now(CLOCK_PROCESS_CPUTIME_ID);
    const double wallStart = now(CLOCK_MONOTONIC);
    block.records = side();
    block.cost.wallSecs = now(CLOCK_MONOTONIC) - wallStart;
    block.cost.cpuSecs = now(CLOCK_PROCESS_CPUTIME_ID) - cpuStart;
    contest.afterBlock();
    return block;
}

Pair measurePair(const Contest& contest, bool subjectFirst) {
    Block subject;
    Block baseline;
    if (subjectFirst) {
        subject = measure(contest, contest.subject);
        baseline = measure(contest, contest.baseline);
    } else {
        baseline = measure(contest, contest.baseline);
        subject = measure(contest, contest.subject);
    }
    if (subject.records != baseline.records) {
        throw std::runtime_error(
            "the two sides do different work: " + std::to_string(subject.records) + " and " +
            std::to_string(baseline.records) + " records");
    }
    return {subject.cost, baseline.cost};
}

} // namespace

std::vector<Pair> runPairs(const Contest& contest, double secs, int minPairs) {
    const auto required =
        static_cast<std::size_t>(std::min(std::max(minPairs, contest.minPairs), contest.maxPairs));
    const auto allowed = static_cast<std::size_t>(contest.maxPairs);
    measurePair(contest, true);

    std::vector<Pair> pairs;
    const double end = now(CLOCK_MONOTONIC) + secs;
    while (pairs.size() < required || (pairs.size() < allowed && now(CLOCK_MONOTONIC) < end)) {
        pairs.push_back(measurePair(contest, pairs.size() % 2 == 0));
    }
    return pairs;
}

} // namespace bench
