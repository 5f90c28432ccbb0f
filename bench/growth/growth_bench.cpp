// What every operation takes when ever more is stored. Needs both servers and the plug-in file, and
// 20 minutes; with --huge as long again, and seven gigabytes.

#include "bench/growth/growing.h"
#include "bench/growth/placement.h"
#include "bench/harness/options.h"
#include "bench/harness/results.h"

#include <QJsonArray>

#include <algorithm>
#include <cstring>
#include <iostream>
#include <memory>

namespace bench {

namespace {

constexpr std::size_t most = 1'000'000;
constexpr std::size_t mostReadings = 10'000'000;
constexpr std::size_t quickMost = 20'000;

/// A call about so many devices takes seconds.
constexpr std::size_t manyDevices = 10'000;

Effort effortFor(const GrowthStep& step, bool quick) {
    if (quick) {
        return {.rounds = 1, .fewestRounds = 1, .secs = 0.1};
    }
    return {.fewestRounds = step.devices < manyDevices ? std::size_t{5} : 2, .secs = 4};
}

QJsonObject measureStep(GrowthStep& step, std::size_t stored, bool quick) {
    const auto records = std::make_shared<std::size_t>(0);
    Block& plugin = step.contest.sides.front().block;
    plugin = [records, block = plugin] { return *records = block(); };
    const Measurement measurement = measure(step.contest, effortFor(step, quick));
    std::cout << step.operation << " for " << step.devices << " of " << stored
              << (step.plan.isEmpty() ? "" : ": by ") << step.plan.toStdString() << '\n'
              << std::flush;
    QJsonObject result = toJson(step.contest.sides, measurement);
    result.insert(QStringLiteral("operation"), QString::fromStdString(step.operation));
    result.insert(QStringLiteral("devices"), static_cast<qint64>(step.devices));
    result.insert(QStringLiteral("records"), static_cast<qint64>(*records));
    result.insert(QStringLiteral("stored"), static_cast<qint64>(stored));
    result.insert(QStringLiteral("plan"), step.plan);
    return result;
}

/// At ten times as many each time, the last size included.
void grow(const Growing& growing, std::size_t last, bool quick, QJsonArray& results) {
    growing.empty();
    std::size_t stored = 0;
    for (std::size_t size = fewestStored; stored < last; size = std::min(size * 10, last)) {
        growing.grow(stored, size);
        stored = size;
        for (GrowthStep& step : growing.steps()) {
            results.append(measureStep(step, stored, quick));
        }
    }
    growing.empty();
}

int run(const Options& options, bool huge) {
    Stores stores;
    QJsonArray results;
    const std::size_t last = options.quick ? quickMost : most;
    if (huge) {
        grow(growingValues(stores), mostReadings, options.quick, results);
    } else {
        for (const auto& growing :
             {growingValues(stores), growingEvents(stores), growingUplinks(stores),
              growingCommands(stores), growingStates(stores), growingQueues(stores),
              growingClients(stores)}) {
            grow(growing, last, options.quick, results);
        }
    }
    options.write({{QStringLiteral("build"), buildAndLibraries()},
                   {QStringLiteral("servers"), stores.versions()},
                   {QStringLiteral("operations"), results}});
    return 0;
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    return bench::runProgram("kelvro_growth_bench", [&] {
        const auto options = bench::takeOptions(argc, argv);
        const bool huge = argc == 2 && std::strcmp(argv[1], "--huge") == 0;
        if (argc > 1 && !huge) {
            std::cerr << "usage: kelvro_growth_bench [--quick] [--huge] [--results FILE]\n";
            return 2;
        }
        return bench::run(options, huge);
    });
}
