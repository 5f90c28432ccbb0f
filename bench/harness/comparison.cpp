#include "bench/harness/comparison.h"

#include "bench/harness/options.h"
#include "bench/harness/results.h"

#include <benchmark/benchmark.h>

#include <QString>

#include <cstdio>
#include <exception>

namespace bench {

namespace {

/// One line for each comparison, at once.
class LineReporter final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            const bool done = run.skipped == benchmark::internal::NotSkipped;
            std::printf("%-46s %s%s\n", run.run_name.function_name.c_str(), done ? "" : "failed: ",
                        (done ? run.report_label : run.skip_message).c_str());
        }
        std::fflush(stdout);
    }
};

Measurement measured(Contest& contest, double secs, bool quick) {
    if (quick) {
        contest.minBlocks = 2;
        return measure(contest, {.rounds = 2, .fewestRounds = 2, .roundSecs = 0, .secs = 0.1});
    }
    return measure(contest, {.secs = secs});
}

std::string summary(const Measurement& measurement) {
    const auto [first, median, third] = measurement.ratioQuartiles;
    return QString::asprintf("%4zu rounds   wall ratio %.3f (%.3f to %.3f)%s",
                             measurement.rounds.size(), median, first, third,
                             measurement.settled ? "" : ", not settled")
        .toStdString();
}

QJsonObject toJson(const Goal& goal) {
    return {{QStringLiteral("against"), QString::fromStdString(std::string(goal.against))},
            {QStringLiteral("cost_at_most"), goal.costAtMost},
            {QStringLiteral("speedup_at_least"), goal.speedupAtLeast}};
}

} // namespace

void Comparisons::runOne(benchmark::State& state, const Comparison& comparison, bool quick) {
    for ([[maybe_unused]] auto iteration : state) {
        try {
            Contest contest = comparison.prepare();
            const Measurement measurement = measured(contest, comparison.secs, quick);
            state.SetIterationTime(measurement.rounds.front().front().wallSecs);
            state.SetLabel(summary(measurement));
            QJsonObject result = toJson(contest.sides, measurement);
            result.insert(QStringLiteral("operation"),
                          QString::fromStdString(comparison.operation));
            result.insert(QStringLiteral("input"), QString::fromStdString(comparison.input));
            result.insert(QStringLiteral("goal"), toJson(comparison.goal));
            m_results.append(result);
        } catch (const std::exception& error) {
            m_failed = true;
            state.SkipWithError(error.what());
        }
    }
}

int Comparisons::run(int argc, char** argv, const std::function<QJsonObject()>& servers) {
    constexpr int nothingMatches = 3;
    benchmark::Initialize(&argc, argv);
    const Options options = takeOptions(argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
        return 2;
    }
    for (const Comparison& comparison : m_comparisons) {
        const auto run = [&](benchmark::State& state) { runOne(state, comparison, options.quick); };
        benchmark::RegisterBenchmark(comparison.operation + '/' + comparison.input, run)
            ->Iterations(1)
            ->UseManualTime();
    }
    LineReporter reporter;
    const std::size_t matching = benchmark::RunSpecifiedBenchmarks(&reporter);
    // They refer to what lives in this function and its caller.
    benchmark::ClearRegisteredBenchmarks();
    benchmark::Shutdown();
    if (!m_results.isEmpty()) {
        options.write({{QStringLiteral("build"), buildAndLibraries()},
                       {QStringLiteral("servers"), servers()},
                       {QStringLiteral("comparisons"), m_results}});
    }
    if (matching == 0) {
        return nothingMatches;
    }
    return m_failed ? 1 : 0;
}

} // namespace bench
