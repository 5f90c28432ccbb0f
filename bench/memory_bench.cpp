// How much memory a large query needs beyond the records that it returns. Needs both servers and
// the plug-in file; see counting_heap.h for how memory is counted.

#include "bench/harness/counting_heap.h"
#include "bench/harness/options.h"
#include "bench/queries.h"
#include "bench/records.h"
#include "bench/store_contests.h"
#include "model/documents/dev_value.h"
#include "model/documents/ul_message.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <iostream>
#include <numeric>
#include <stdexcept>

namespace bench {

namespace {

constexpr std::size_t records = 100'000;
constexpr std::size_t quickRecords = 10'000;

constexpr std::size_t mebibyte = std::size_t{1024} * 1024;
constexpr std::size_t readingsMayTake = 60 * mebibyte;
/// The server's replies are no larger, and one at a time is what the client library holds.
constexpr std::size_t replyTakes = 16 * mebibyte;
constexpr std::size_t smallChange = mebibyte;

/// Of all devices and times.
template <typename Filter>
Filter everything(const std::vector<int>& devices, int limit) {
    Filter filter;
    filter.modem_ids.assign(devices.begin(), devices.end());
    filter.begin = QDateTime::fromSecsSinceEpoch(0, Qt::UTC);
    filter.end = QDateTime::fromSecsSinceEpoch(4'000'000'000, Qt::UTC);
    filter.limit = limit;
    return filter;
}

std::size_t rawPeak(RawCollection& collection, const ReadyQuery& query) {
    const std::size_t before = counting_heap::held();
    counting_heap::startPeak();
    collection.drain({query});
    return counting_heap::peak() - before;
}

/// Held is what goes when the answer is let go; a peak is that above what the process held before,
/// after a first query has filled what the client library keeps. `goal` gives what the peak may be
/// for what is held.
template <typename Filter, typename Ask, typename Goal>
QJsonObject measureQuery(const QString& operation, const std::vector<int>& devices,
                         std::size_t count, const Ask& ask, RawCollection& collection,
                         const Goal& goal) {
    ask(everything<Filter>(devices, 1000));
    const auto all = everything<Filter>(devices, 0);
    const std::size_t before = counting_heap::held();
    counting_heap::startPeak();
    auto answer = ask(all);
    const std::size_t peak = counting_heap::peak() - before;
    const std::size_t after = counting_heap::held();
    if (countRecords(*answer) != count) {
        throw std::runtime_error("the query has not returned all records");
    }
    answer.reset();
    const std::size_t held = after - counting_heap::held();
    return {
        {QStringLiteral("operation"), operation},
        {QStringLiteral("records"), static_cast<qint64>(count)},
        {QStringLiteral("held_bytes"), static_cast<qint64>(held)},
        {QStringLiteral("peak_bytes"), static_cast<qint64>(peak)},
        {QStringLiteral("raw_peak_bytes"), static_cast<qint64>(rawPeak(collection, newestOf(all)))},
        {QStringLiteral("goal_bytes"), static_cast<qint64>(goal(held))},
    };
}

QJsonObject measureReadings(Stores& stores, std::size_t count) {
    namespace layout = layout::eav_values;
    const auto collection = stores.emptyCollection(layout::collection, layout::indexes);
    putAll(*collection, "readings", 0, count,
           [](std::size_t some, std::size_t first) { return documentsOf(values(some, first)); });
    std::vector<int> devices(10);
    std::iota(devices.begin(), devices.end(), 1);
    return measureQuery<model::filter_eav>(
        QStringLiteral("values GetValues"), devices, count,
        [&](const model::filter_eav& filter) { return stores.eav().GetValues(filter); },
        *collection, [](std::size_t) { return readingsMayTake; });
}

QJsonObject measureTelegrams(Stores& stores, std::size_t count) {
    namespace layout = layout::ul_messages;
    const auto collection = stores.emptyCollection(layout::collection, layout::indexes);
    putAll(*collection, "telegrams", 0, count, [](std::size_t some, std::size_t first) {
        return documentsOf(messages(some, 0, first));
    });
    return measureQuery<model::filter_roll>(
        QStringLiteral("uplink GetMessages"), devicesOf(messages(1000, 0)), count,
        [&](const model::filter_roll& filter) { return stores.uplinks().GetMessages(filter); },
        *collection, [](std::size_t held) { return held + replyTakes + smallChange; });
}

int run(const Options& options) {
    const std::size_t count = options.quick ? quickRecords : records;
    Stores stores;
    const QJsonArray queries{measureReadings(stores, count), measureTelegrams(stores, count)};
    std::cout << QJsonDocument{queries}.toJson().toStdString();
    options.write({{QStringLiteral("queries"), queries}});
    return 0;
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    return bench::runProgram("kelvro_memory_bench", [&] {
        const auto options = bench::takeOptions(argc, argv);
        if (argc > 1) {
            std::cerr << "usage: kelvro_memory_bench [--quick] [--results FILE]\n";
            return 2;
        }
        return bench::run(options);
    });
}
