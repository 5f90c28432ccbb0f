// What a read takes when a hundred times as many records are stored: the same queries, with the
// same answers. Needs both servers and the plug-in file, and a quarter of an hour.

#include "bench/harness/options.h"
#include "bench/harness/results.h"
#include "bench/queries.h"
#include "bench/records.h"
#include "bench/store_contests.h"
#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "model/documents/dl_message.h"
#include "model/documents/ul_message.h"

#include <bsoncxx/v1/types/view.hpp>

#include <QJsonArray>

#include <array>
#include <iostream>
#include <numeric>

namespace bench {

namespace {

constexpr std::size_t few = 10'000;
constexpr std::size_t many = 1'000'000;
constexpr std::size_t quickMany = 40'000;

/// Each of these devices has sent a hundred of the first `few` records; ten of them are asked for.
constexpr int devices = 100;
constexpr int askedDevices = 10;
/// Others, which come with the rest of the records.
constexpr int otherDevices = 9'900;

constexpr std::size_t commandsById = 100;

/// The first `few` records are the newest ones, a second apart. Of the rest, half are older ones of
/// the same devices, half are from the same hours and of other devices.
template <typename Record>
void place(Record& record, std::size_t index) {
    static const QDateTime newest = QDateTime::fromSecsSinceEpoch(1'700'000'000, Qt::UTC);
    const bool other = index >= few && index % 2 == 1;
    record.modem_id = other ? 1 + devices + static_cast<int>(index / 2 % otherDevices)
                            : 1 + static_cast<int>(index % devices);
    record.timestamp = newest.addSecs(-static_cast<qint64>(other ? index % few : index));
}

/// Of `count` records, all of them among the first `few`.
template <typename Filter>
Filter newest(std::size_t count) {
    model::message last;
    model::message first;
    place(last, 0);
    place(first, count * devices / askedDevices - 1);
    Filter filter;
    filter.modem_ids.resize(askedDevices);
    std::iota(filter.modem_ids.begin(), filter.modem_ids.end(), 1);
    filter.begin = first.timestamp;
    filter.end = last.timestamp;
    return filter;
}

/// One operation with one answer.
struct Read {
    std::string operation;
    std::string answer;
    Contest contest;
    /// As the plug-in sends it.
    ReadyQuery query;
};

/// One collection, what is stored in it and what is asked of it.
struct Growing {
    std::string_view collection;
    std::span<const layout::index> indexes;
    Documents (*make)(std::size_t count, std::size_t first);
    std::vector<Read> (*reads)(Stores& stores, const RawCollectionPtr& collection);
};

template <typename Record>
Documents placed(std::vector<Record> records, std::size_t first) {
    Documents documents;
    for (Record& record : records) {
        place(record, first++);
        documents.push_back(bson_utils::toBson(record));
    }
    return documents;
}

template <typename Record>
std::vector<Record> readyRecords(std::vector<Record> records) {
    for (std::size_t i = 0; i < records.size(); ++i) {
        place(records[i], i / askedDevices * devices + i % askedDevices);
    }
    return readBack(records);
}

constexpr std::array<std::size_t, 2> answers{100, 1000};

Documents uplinkDocuments(std::size_t count, std::size_t first) {
    auto records = messages(count, 0, first);
    return placed(std::move(records), first);
}

/// For each size of an answer. `ask(filter)` is the operation, `make(count)` gives records.
template <typename Filter, typename Ask, typename Make>
std::vector<Read> newestReads(const char* operation, const RawCollectionPtr& collection,
                              const Ask& ask, const Make& make) {
    std::vector<Read> reads;
    for (const std::size_t answer : answers) {
        const auto filter = newest<Filter>(answer);
        const auto query = newestOf(filter);
        reads.push_back({operation, std::to_string(answer),
                         readContest([ask, filter] { return ask(filter); }, collection, {query},
                                     readyRecords(make(answer))),
                         query});
    }
    return reads;
}

std::vector<Read> uplinkReads(Stores& stores, const RawCollectionPtr& collection) {
    return newestReads<model::filter_roll>(
        "uplink GetMessages", collection,
        [&repository = stores.uplinks()](const auto& filter) {
            return repository.GetMessages(filter);
        },
        [](std::size_t count) { return messages(count, 0); });
}

Documents valueDocuments(std::size_t count, std::size_t first) {
    return placed(values(count, first), first);
}

std::vector<Read> valueReads(Stores& stores, const RawCollectionPtr& collection) {
    const auto ask = [&repository = stores.eav()](const model::filter_eav& filter) {
        return repository.GetValues(filter);
    };
    auto reads = newestReads<model::filter_eav>("values GetValues", collection, ask,
                                                [](std::size_t count) { return values(count); });
    auto filter = newest<model::filter_eav>(answers[1]);
    const auto codes = numericObisCodes(5);
    filter.obis_codes.assign(codes.begin(), codes.end());
    filter.first_last = true;
    const auto queries = firstAndLastOf(filter);
    reads.push_back({"values GetValues first_last", "first and last",
                     readContest([ask, filter] { return ask(filter); }, collection, queries,
                                 readyRecords(values(queries.size()))),
                     queries.front()});
    return reads;
}

Documents eventDocuments(std::size_t count, std::size_t first) {
    return placed(events(count, first), first);
}

std::vector<Read> eventReads(Stores& stores, const RawCollectionPtr& collection) {
    return newestReads<model::filter_eav>(
        "events GetEvents", collection,
        [&repository = stores.eav()](const auto& filter) { return repository.GetEvents(filter); },
        [](std::size_t count) { return events(count); });
}

/// Those that came with the rest have been executed.
Documents commandDocuments(std::size_t count, std::size_t first) {
    auto records = commands(count, 1, first);
    if (first >= few) {
        for (model::dl_message& command : records) {
            command.status = model::dl_message::dl_status::EXECUTED;
        }
    }
    return placed(std::move(records), first);
}

Read commandsByDevice(Stores& stores, const RawCollectionPtr& collection, const char* operation,
                      decltype(&interfaces::IDLAPPMessageRepository::GetCommands) get,
                      Commands which, std::size_t answer) {
    const auto filter = newest<model::filter_dl>(answer);
    const auto queries = newestOf(filter, which);
    const auto ask = [&repository = stores.downlinks(), get, filter] {
        return (repository.*get)(filter);
    };
    return {operation, std::to_string(answer),
            readContest(ask, collection, queries, readyRecords(commands(answer, 1))),
            queries.front()};
}

Read commandById(Stores& stores, const RawCollectionPtr& collection) {
    std::vector<QString> ids;
    auto options = mongo::newestFirst(layout::dl_messages::timestamp, commandsById);
    auto cursor = collection->unmeasured.find(bsoncxx::v1::document::view{}, options);
    for (const auto& command : cursor) {
        ids.push_back(QString::fromStdString(command["_id"].get_oid().value.to_string()));
    }
    const auto queries = conditionsOf(ids);
    return {
        "downlink GetById",
        "1",
        callByCall(
            ids.size(),
            [&repository = stores.downlinks(), ids](std::size_t i) { repository.GetById(ids[i]); },
            [collection, queries](std::size_t i) { collection->measured.find_one(queries[i]); }),
        {queries.front(), {}}};
}

std::vector<Read> commandReads(Stores& stores, const RawCollectionPtr& collection) {
    using Repository = interfaces::IDLAPPMessageRepository;
    std::vector<Read> reads;
    for (const std::size_t answer : answers) {
        reads.push_back(commandsByDevice(stores, collection, "downlink GetCommands",
                                         &Repository::GetCommands, Commands::all, answer));
        reads.push_back(commandsByDevice(stores, collection, "downlink GetNotAckCommands",
                                         &Repository::GetNotAckCommands, Commands::notAcknowledged,
                                         answer));
    }
    reads.push_back(commandById(stores, collection));
    return reads;
}

constexpr std::array<Growing, 4> collections{{
    {layout::eav_values::collection, layout::eav_values::indexes, valueDocuments, valueReads},
    {layout::eav_events::collection, layout::eav_events::indexes, eventDocuments, eventReads},
    {layout::ul_messages::collection, layout::ul_messages::indexes, uplinkDocuments, uplinkReads},
    {layout::dl_messages::collection, layout::dl_messages::indexes, commandDocuments, commandReads},
}};

QJsonArray measureAll(Stores& stores, const Growing& growing, const RawCollectionPtr& collection,
                      std::size_t stored, bool quick) {
    QJsonArray measured;
    for (Read& read : growing.reads(stores, collection)) {
        const Effort effort =
            quick ? Effort{.rounds = 2, .fewestRounds = 2, .secs = 0.1} : Effort{.secs = 10};
        const Measurement measurement = measure(read.contest, effort);
        const QString plan = stores.planOf(growing.collection, read.query);
        std::cout << read.operation << '/' << read.answer << " of " << stored << ": by "
                  << plan.toStdString() << '\n'
                  << std::flush;
        QJsonObject result = toJson(read.contest.sides, measurement);
        result.insert(QStringLiteral("operation"), QString::fromStdString(read.operation));
        result.insert(QStringLiteral("answer"), QString::fromStdString(read.answer));
        result.insert(QStringLiteral("stored"), static_cast<qint64>(stored));
        result.insert(QStringLiteral("plan"), plan);
        measured.append(result);
    }
    return measured;
}

int run(const Options& options) {
    Stores stores;
    QJsonArray reads;
    for (const Growing& growing : collections) {
        const auto collection = stores.emptyCollection(growing.collection, growing.indexes);
        std::size_t stored = 0;
        for (const std::size_t size : {few, options.quick ? quickMany : many}) {
            putAll(*collection, growing.collection, stored, size, growing.make);
            stored = size;
            for (const auto& read :
                 measureAll(stores, growing, collection, stored, options.quick)) {
                reads.append(read);
            }
        }
        stores.emptyCollection(growing.collection, growing.indexes);
    }
    options.write({{QStringLiteral("build"), buildAndLibraries()},
                   {QStringLiteral("servers"), stores.versions()},
                   {QStringLiteral("reads"), reads}});
    return 0;
}

} // namespace

} // namespace bench

int main(int argc, char** argv) {
    return bench::runProgram("kelvro_growth_bench", [&] {
        const auto options = bench::takeOptions(argc, argv);
        if (argc > 1) {
            std::cerr << "usage: kelvro_growth_bench [--quick] [--results FILE]\n";
            return 2;
        }
        return bench::run(options);
    });
}
