#pragma once

#include "bench/harness/contest.h"

#include <QJsonArray>
#include <QJsonObject>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace benchmark {
class State;
}

namespace bench {

/// What the wall ratio of a comparison's first side to another one should be; 0 for none.
struct Goal {
    /// The name of the other side.
    std::string_view against = "raw";
    /// The first side's cost over the other's: what the plug-in adds to what it stands on.
    double costAtMost = 0;
    /// The other's cost over the first side's: how many times faster than the plain way.
    double speedupAtLeast = 0;
};

struct Comparison {
    std::string operation;
    /// What it is done with: a number of records, or the name of the input.
    std::string input;
    Goal goal;
    /// The time that measuring it may take.
    double secs = Effort{}.secs;
    /// Builds the contest when its turn has come; what it set up goes when the contest is
    /// destroyed. An exception of either ends the comparison and makes the program fail.
    std::function<Contest()> prepare;
};

/// The comparisons of a benchmark program, run by Google Benchmark one after the other.
class Comparisons {
public:
    void add(Comparison comparison) { m_comparisons.push_back(std::move(comparison)); }

    /// Runs them as the command line says: Google Benchmark's options and those of options.h.
    /// Prints a line for each comparison when it is done; the results have the costs of every
    /// round, for bench/run to evaluate. `servers` is asked at the end. Returns the exit status:
    /// 3 if no comparison has a name that matches. Once in a process.
    int run(int argc, char** argv, const std::function<QJsonObject()>& servers);

private:
    void runOne(benchmark::State& state, const Comparison& comparison, bool quick);

    std::vector<Comparison> m_comparisons;
    QJsonArray m_results;
    bool m_failed = false;
};

} // namespace bench
