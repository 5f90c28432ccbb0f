// How much memory a large query needs beyond the records that it returns. Needs both servers and
// the plug-in file; see counting_heap.h for how memory is counted.

#include "bench/harness/counting_heap.h"
#include "bench/harness/options.h"
#include "bench/records.h"
#include "bench/store_contests.h"
#include "model/documents/dev_value.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <iostream>
#include <span>
#include <stdexcept>

namespace bench {

namespace {

constexpr std::size_t records = 100'000;
constexpr std::size_t quickRecords = 10'000;
constexpr double goal = 1.3;

void storeValues(Stores& stores, std::size_t count) {
    const auto collection =
        stores.emptyCollection(layout::eav_values::collection, layout::eav_values::indexes);
    const auto all = values(count);
    constexpr std::size_t perRequest = 10'000;
    for (std::size_t begin = 0; begin < count; begin += perRequest) {
        const std::size_t end = std::min(begin + perRequest, count);
        collection->put(documentsOf(std::span(all).subspan(begin, end - begin)));
        std::cout << "stored " << end << " of " << count << " readings\n" << std::flush;
    }
    collection->require(count);
}

model::filter_eav everything(int limit) {
    model::filter_eav filter;
    filter.modem_ids = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    filter.begin = QDateTime::fromSecsSinceEpoch(0, Qt::UTC);
    filter.end = QDateTime::fromSecsSinceEpoch(4'000'000'000, Qt::UTC);
    filter.limit = limit;
    return filter;
}

/// Held is what goes when the answer is let go; the peak is that above what the process held
/// before, after a first query has filled what the client library keeps.
QJsonObject measureQuery(interfaces::IEAVRepository& repository, std::size_t count) {
    repository.GetValues(everything(1000));
    const std::size_t before = counting_heap::held();
    counting_heap::startPeak();
    auto answer = repository.GetValues(everything(0));
    const std::size_t peak = counting_heap::peak() - before;
    const std::size_t after = counting_heap::held();
    if (countRecords(*answer) != count) {
        throw std::runtime_error("the query has not returned all readings");
    }
    answer.reset();
    const std::size_t held = after - counting_heap::held();
    return {
        {QStringLiteral("operation"), QStringLiteral("values GetValues")},
        {QStringLiteral("records"), static_cast<qint64>(count)},
        {QStringLiteral("held_bytes"), static_cast<qint64>(held)},
        {QStringLiteral("peak_bytes"), static_cast<qint64>(peak)},
        {QStringLiteral("ratio"), static_cast<double>(peak) / static_cast<double>(held)},
        {QStringLiteral("goal"), goal},
    };
}

int run(const Options& options) {
    const std::size_t count = options.quick ? quickRecords : records;
    Stores stores;
    storeValues(stores, count);
    const QJsonObject query = measureQuery(stores.eav(), count);
    std::cout << QJsonDocument{query}.toJson().toStdString();
    options.write({{QStringLiteral("queries"), QJsonArray{query}}});
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
