#include "bench/comparison.h"

#include <benchmark/benchmark.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iostream>
#include <string_view>
#include <utility>
#include <vector>

namespace bench {

namespace {

struct Options {
    bool quick = false;
    QString resultsFile;
};

Options options;
QJsonArray results;
bool failed = false;

struct Quartiles {
    double first = 0;
    double median = 0;
    double third = 0;
};

Quartiles quartilesOf(std::vector<double> numbers) {
    std::ranges::sort(numbers);
    const auto at = [&](double share) {
        const double place = share * static_cast<double>(numbers.size() - 1);
        const auto below = static_cast<std::size_t>(place);
        const auto above = std::min(below + 1, numbers.size() - 1);
        return numbers[below] +
               (numbers[above] - numbers[below]) * (place - static_cast<double>(below));
    };
    return {at(0.25), at(0.5), at(0.75)};
}

template <typename Number>
Quartiles quartilesOver(const std::vector<Pair>& pairs, Number number) {
    std::vector<double> numbers;
    numbers.reserve(pairs.size());
    for (const Pair& pair : pairs) {
        numbers.push_back(number(pair));
    }
    return quartilesOf(std::move(numbers));
}

QJsonArray toJson(const Quartiles& quartiles) {
    return {quartiles.first, quartiles.median, quartiles.third};
}

struct Result {
    Quartiles wallRatio;
    Quartiles cpuRatio;
    double subjectSecs = 0;
};

Result evaluate(const Goal& goal, const std::vector<Pair>& pairs) {
    const auto ratio = [&](double subject, double baseline) {
        return goal.kind == Goal::Kind::costAtMost ? subject / baseline : baseline / subject;
    };
    Result result;
    result.wallRatio = quartilesOver(pairs, [&](const Pair& pair) {
        return ratio(pair.subject.wallSecs, pair.baseline.wallSecs);
    });
    result.cpuRatio = quartilesOver(pairs, [&](const Pair& pair) {
        return ratio(pair.subject.cpuSecs, pair.baseline.cpuSecs);
    });
    result.subjectSecs =
        quartilesOver(pairs, [](const Pair& pair) { return pair.subject.wallSecs; }).median;
    return result;
}

QJsonObject toJson(const Comparison& comparison, std::size_t recordsPerBlock,
                   const std::vector<Pair>& pairs, const Result& result) {
    const auto perRecord = [&](auto secs) {
        return quartilesOver(pairs, secs).median / static_cast<double>(recordsPerBlock);
    };
    QJsonArray rawPairs;
    for (const Pair& pair : pairs) {
        rawPairs.append(QJsonArray{pair.subject.wallSecs, pair.baseline.wallSecs,
                                   pair.subject.cpuSecs, pair.baseline.cpuSecs});
    }
    const bool cost = comparison.goal.kind == Goal::Kind::costAtMost;
    return {
        {QStringLiteral("operation"), QString::fromStdString(comparison.operation)},
        {QStringLiteral("input"), QString::fromStdString(comparison.input)},
        {QStringLiteral("ratio"),
         cost ? QStringLiteral("subject / baseline") : QStringLiteral("baseline / subject")},
        {QStringLiteral("goal"), comparison.goal.ratio},
        {QStringLiteral("wall_ratio_quartiles"), toJson(result.wallRatio)},
        {QStringLiteral("cpu_ratio_quartiles"), toJson(result.cpuRatio)},
        {QStringLiteral("subject_wall_secs_per_record"),
         perRecord([](const Pair& pair) { return pair.subject.wallSecs; })},
        {QStringLiteral("baseline_wall_secs_per_record"),
         perRecord([](const Pair& pair) { return pair.baseline.wallSecs; })},
        {QStringLiteral("subject_cpu_secs_per_record"),
         perRecord([](const Pair& pair) { return pair.subject.cpuSecs; })},
        {QStringLiteral("baseline_cpu_secs_per_record"),
         perRecord([](const Pair& pair) { return pair.baseline.cpuSecs; })},
        {QStringLiteral("records_per_block"), static_cast<int>(recordsPerBlock)},
        {QStringLiteral("pair_columns"),
         QJsonArray{QStringLiteral("subject_wall_secs"), QStringLiteral("baseline_wall_secs"),
                    QStringLiteral("subject_cpu_secs"), QStringLiteral("baseline_cpu_secs")}},
        {QStringLiteral("pairs"), rawPairs},
    };
}

void runComparison(benchmark::State& state, const Comparison& comparison,
                   const std::function<Contest()>& prepare) {
    constexpr double secs = 3.0;
    constexpr int minPairs = 7;
    constexpr double quickSecs = 0.1;
    constexpr int quickMinPairs = 2;
    for ([[maybe_unused]] auto iteration : state) {
        try {
            Contest contest = prepare();
            if (options.quick) {
                contest.minPairs = quickMinPairs;
            }
            std::size_t recordsPerBlock = 0;
            const auto counting = std::exchange(contest.subject, {});
            contest.subject = [&] { return recordsPerBlock = counting(); };
            const auto pairs = runPairs(contest, options.quick ? quickSecs : secs,
                                        options.quick ? quickMinPairs : minPairs);
            const Result result = evaluate(comparison.goal, pairs);
            results.append(toJson(comparison, recordsPerBlock, pairs, result));
            state.SetIterationTime(result.subjectSecs);
            state.counters["pairs"] = static_cast<double>(pairs.size());
            state.counters["wall"] = result.wallRatio.median;
            state.counters["wall_q1"] = result.wallRatio.first;
            state.counters["wall_q3"] = result.wallRatio.third;
            state.counters["cpu"] = result.cpuRatio.median;
        } catch (const std::exception& error) {
            failed = true;
            state.SkipWithError(error.what());
        }
    }
}

/// One line for each comparison, at once.
class LineReporter final : public benchmark::BenchmarkReporter {
public:
    bool ReportContext(const Context& /*context*/) override { return true; }

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.skipped != benchmark::internal::NotSkipped) {
                std::printf("%-46s failed: %s\n", run.run_name.function_name.c_str(),
                            run.skip_message.c_str());
                continue;
            }
            const auto number = [&](const char* name) -> double { return run.counters.at(name); };
            std::printf("%-46s %5.0f pairs   wall %6.3f (%.3f to %.3f)   cpu %6.3f\n",
                        run.run_name.function_name.c_str(), number("pairs"), number("wall"),
                        number("wall_q1"), number("wall_q3"), number("cpu"));
        }
        std::fflush(stdout);
    }
};

/// Takes our own options out of the command line.
bool parseOptions(int& argc, char** argv) {
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--quick") {
            options.quick = true;
        } else if (argument == "--results" && i + 1 < argc) {
            options.resultsFile = QString::fromLocal8Bit(argv[++i]);
        } else {
            argv[kept++] = argv[i];
        }
    }
    argc = kept;
    argv[argc] = nullptr;
    return !benchmark::ReportUnrecognizedArguments(argc, argv);
}

bool writeResults(const QJsonObject& environment) {
    QSaveFile file(options.resultsFile);
    const QJsonDocument document{QJsonObject{
        {QStringLiteral("environment"), environment},
        {QStringLiteral("comparisons"), results},
    }};
    if (!file.open(QIODevice::WriteOnly) || file.write(document.toJson()) < 0 || !file.commit()) {
        std::cerr << "cannot write " << options.resultsFile.toStdString() << ": "
                  << file.errorString().toStdString() << '\n';
        return false;
    }
    return true;
}

} // namespace

void registerComparison(const Comparison& comparison, const std::function<Contest()>& prepare) {
    const std::string name = comparison.operation + '/' + comparison.input;
    benchmark::RegisterBenchmark(
        name, [=](benchmark::State& state) { runComparison(state, comparison, prepare); })
        ->Iterations(1)
        ->UseManualTime();
}

int runComparisons(int argc, char** argv, const std::function<QJsonObject()>& environment) {
    benchmark::Initialize(&argc, argv);
    if (!parseOptions(argc, argv)) {
        return 2;
    }
    LineReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    if (!options.resultsFile.isEmpty() && !results.isEmpty() && !writeResults(environment())) {
        return 1;
    }
    return failed ? 1 : 0;
}

} // namespace bench
