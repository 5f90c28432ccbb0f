#pragma once

#include "bench/contest.h"

#include <QJsonObject>

#include <functional>
#include <string>

namespace bench {

/// Which ratio a comparison is judged by.
struct Goal {
    enum class Kind {
        /// subject / baseline: how much the plug-in adds to what it stands on.
        costAtMost,
        /// baseline / subject: how many times faster than the plain way.
        speedupAtLeast,
    };
    Kind kind = Kind::costAtMost;
    /// 0 for none: the ratio is only told.
    double ratio = 0;
};

struct Comparison {
    std::string operation;
    /// What it is done with: a number of records, or the name of the input.
    std::string input;
    Goal goal;
};

/// The parts of a benchmark program: comparisons, run by Google Benchmark one after the other.
///
/// `prepare` builds the contest when its turn has come; what it set up goes when the contest is
/// destroyed. An exception of either ends the comparison and makes the program fail.
void registerComparison(const Comparison& comparison, const std::function<Contest()>& prepare);

/// Runs the registered comparisons as the command line says: Google Benchmark's options, and
///     --quick           few pairs, to see that everything runs; its ratios mean nothing
///     --results FILE    where the numbers of every pair are written as JSON
/// Prints a line for each comparison when it is done. `environment` is asked at the end for what
/// the JSON tells about the surroundings. Returns the exit status.
int runComparisons(int argc, char** argv, const std::function<QJsonObject()>& environment);
} // namespace bench
