#include "host/bench/bench.h"

#include "host/bench/bench_records.h"
#include "host/bench/bench_stores.h"
#include "host/check/attempt.h"
#include "host/console.h"
#include "host/input/settings.h"
#include "host/progress.h"
#include "host/session/interrupt.h"

#include <chrono>
#include <cmath>
#include <utility>

namespace host {

namespace {

using Clock = std::chrono::steady_clock;

Measurement measure(const BenchOperation& operation, std::chrono::milliseconds time) {
    Measurement measurement{operation.store, operation.name, {}, 0};
    const auto end = Clock::now() + time;
    do {
        if (operation.prepare) {
            operation.prepare();
        }
        const auto begin = Clock::now();
        measurement.records += operation.call();
        measurement.msecs.push_back(
            std::chrono::duration<double, std::milli>(Clock::now() - begin).count());
    } while (Clock::now() < end && !Interrupt::requested());
    return measurement;
}

std::vector<Measurement> measureAll(const std::vector<BenchOperation>& operations,
                                    std::chrono::milliseconds time, Session& session) {
    std::vector<Measurement> measurements;
    auto progress = session.remarks().progress(QStringLiteral("Operations measured"),
                                               static_cast<int>(operations.size()));
    for (const auto& operation : operations) {
        if (Interrupt::requested()) {
            break;
        }
        const auto what = QStringLiteral("%1 of %2 at %3, %4")
                              .arg(operation.name, operation.store, serverName(session.settings()),
                                   redisName(session.settings()));
        measurements.push_back(attempt(what, [&] {
            return measure(operation, time / static_cast<qint64>(operations.size()));
        }));
        progress.advance();
    }
    return measurements;
}

double rounded(double number) {
    return std::round(number * 1000.0) / 1000.0;
}

void show(const std::vector<Measurement>& measurements, Session& session) {
    auto output = session.output({
        {QStringLiteral("store"), QStringLiteral("Store"), false},
        {QStringLiteral("operation"), QStringLiteral("Operation"), false},
        {QStringLiteral("calls"), QStringLiteral("Calls"), true},
        {QStringLiteral("records"), QStringLiteral("Records"), true},
        {QStringLiteral("records_per_second"), QStringLiteral("per s"), true},
        {QStringLiteral("median_ms"), QStringLiteral("Median ms"), true},
        {QStringLiteral("p99_ms"), QStringLiteral("99 % ms"), true},
    });
    for (const auto& each : measurements) {
        output.add({each.store, each.operation, static_cast<qint64>(each.msecs.size()),
                    each.records, std::round(each.recordRate()), rounded(each.percentileMsecs(0.5)),
                    rounded(each.percentileMsecs(0.99))});
    }
    output.finish();
}

/// Removes what the bench has stored, at the latest when it goes.
class Cleaning {
public:
    Cleaning(BenchStores& stores, Console& remarks) : m_stores(stores), m_remarks(remarks) {}
    ~Cleaning() { clean(); }
    Cleaning(const Cleaning&) = delete;
    Cleaning& operator=(const Cleaning&) = delete;

    /// True if nothing is left.
    bool clean() {
        if (std::exchange(m_done, true)) {
            return true;
        }
        const auto faults = m_stores.removeAll();
        for (const auto& fault : faults) {
            m_remarks.line(fault);
        }
        if (!faults.isEmpty()) {
            m_remarks.line(QStringLiteral("The next bench removes it; all but states and queues "
                                          "expires within the hour."));
        }
        return faults.isEmpty();
    }

private:
    BenchStores& m_stores;
    Console& m_remarks;
    bool m_done = false;
};

} // namespace

ExitStatus runBench(const BenchOptions& options, Session& session) {
    if (!options.agreed) {
        session.remarks().line(
            QStringLiteral(
                "kelvro-host: bench works in the database of your data, for the plug-in "
                "always uses \"kelvrostorage\", and in its Redis databases. It uses the "
                "devices %1 to %2 there and removes them at the end. Say --yes if it may.")
                .arg(firstBenchDevice)
                .arg(firstBenchDevice + benchDeviceCount - 1));
        return ExitStatus::WronglyCalled;
    }
    const Interrupt interrupt;
    BenchStores stores(session);
    attempt(QStringLiteral("looking for records of the bench's devices"),
            [&] { stores.requireUnused(); });
    Cleaning cleaning(stores, session.remarks());
    stores.removeAll();
    const auto measurements =
        measureAll(stores.operations(), std::chrono::seconds(options.secs), session);
    const bool clean = cleaning.clean();
    show(measurements, session);
    return clean && !Interrupt::requested() ? ExitStatus::Done : ExitStatus::Failed;
}

} // namespace host
