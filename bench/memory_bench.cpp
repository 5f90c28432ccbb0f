// How much memory a large query needs beyond the records that it returns. Needs both servers and
// the plug-in file; see counting_heap.h for how memory is counted.

#include "bench/counting_heap.h"
#include "bench/records.h"
#include "bench/store_contests.h"
#include "model/documents/dev_value.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSaveFile>
#include <QString>

#include <exception>
#include <iostream>
#include <stdexcept>
#include <string_view>

namespace bench {

namespace {

constexpr std::size_t records = 100'000;
constexpr std::size_t quickRecords = 10'000;
constexpr double goal = 1.3;

void store(Stores& stores, std::size_t count) {
    auto collection = stores.fresh(layout::eav_values::collection, layout::eav_values::indexes);
    const auto all = values(count);
    constexpr std::size_t perRequest = 10'000;
    for (std::size_t begin = 0; begin < count; begin += perRequest) {
        const std::size_t end = std::min(begin + perRequest, count);
        collection.insert_many(documentsOf(std::span(all).subspan(begin, end - begin)));
        std::cout << "stored " << end << " of " << count << " readings\n" << std::flush;
    }
    requireDocuments(collection, count);
}

/// All stored readings. Held is what goes when they are let go; the peak is that above what the
/// process held before, after a first query has filled what the client library keeps.
QJsonObject measureQuery(Stores& stores, std::size_t count) {
    model::filter_eav filter;
    filter.modem_ids = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10};
    filter.begin = QDateTime::fromSecsSinceEpoch(0, Qt::UTC);
    filter.end = QDateTime::fromSecsSinceEpoch(4'000'000'000, Qt::UTC);
    filter.limit = 1000;
    stores.eav().GetValues(filter);
    filter.limit = 0;

    const std::size_t before = counting_heap::held();
    counting_heap::startPeak();
    auto answer = stores.eav().GetValues(filter);
    const std::size_t peak = counting_heap::peak() - before;
    const std::size_t after = counting_heap::held();
    if (countRecords(*answer) != count) {
        throw std::runtime_error("the query has not returned all readings");
    }
    answer.reset();
    const std::size_t held = after - counting_heap::held();
    return {
        {QStringLiteral("operation"), QStringLiteral("values GetValues")},
        {QStringLiteral("records"), static_cast<int>(count)},
        {QStringLiteral("held_bytes"), static_cast<double>(held)},
        {QStringLiteral("peak_bytes"), static_cast<double>(peak)},
        {QStringLiteral("ratio"), static_cast<double>(peak) / static_cast<double>(held)},
        {QStringLiteral("goal"), goal},
    };
}

void write(const QString& fileName, const QJsonObject& query) {
    QSaveFile file(fileName);
    const QJsonDocument document{QJsonObject{{QStringLiteral("queries"), QJsonArray{query}}}};
    if (!file.open(QIODevice::WriteOnly) || file.write(document.toJson()) < 0 || !file.commit()) {
        throw std::runtime_error("cannot write " + fileName.toStdString() + ": " +
                                 file.errorString().toStdString());
    }
}

} // namespace

} // namespace bench

int main(int argc, char** argv) try {
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    bool quick = false;
    QString results;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (argument == "--quick") {
            quick = true;
        } else if (argument == "--results" && i + 1 < argc) {
            results = QString::fromLocal8Bit(argv[++i]);
        } else {
            std::cerr << "usage: kelvro_memory_bench [--quick] [--results FILE]\n";
            return 2;
        }
    }
    const std::size_t count = quick ? bench::quickRecords : bench::records;
    bench::Stores stores;
    bench::store(stores, count);
    const QJsonObject query = bench::measureQuery(stores, count);
    std::cout << QJsonDocument(query).toJson().toStdString();
    if (!results.isEmpty()) {
        bench::write(results, query);
    }
    return 0;
} catch (const std::exception& error) {
    std::cerr << "kelvro_memory_bench: " << error.what() << '\n';
    return 1;
}
