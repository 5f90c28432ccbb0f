#include "bench/records.h"
#include "bench/store_contests.h"
#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "mongo/query.h"

#include <numeric>

namespace bench {

namespace {

namespace value_field = layout::eav_values;
namespace event_field = layout::eav_events;
using bson_utils::bson_builder;

mongocxx::v1::collection emptyValues(Stores& stores) {
    return stores.fresh(value_field::collection, value_field::indexes);
}

mongocxx::v1::collection rawValues(Stores& stores) {
    return stores.raw(value_field::collection);
}

mongocxx::v1::collection rawEvents(Stores& stores) {
    return stores.raw(event_field::collection);
}

mongocxx::v1::collection emptyEvents(Stores& stores) {
    return stores.fresh(event_field::collection, event_field::indexes);
}

/// All records: of every device and of all times.
template <typename Record>
model::filter_eav filterFor(const std::vector<Record>& records) {
    model::filter_eav filter;
    const auto [first, last] = std::ranges::minmax(records, {}, &Record::timestamp);
    filter.begin = first.timestamp;
    filter.end = last.timestamp;
    filter.modem_ids.resize(
        static_cast<std::size_t>(std::ranges::max(records, {}, &Record::modem_id).modem_id));
    std::iota(filter.modem_ids.begin(), filter.modem_ids.end(), 1);
    return filter;
}

bsoncxx::v1::document::value queryFor(const model::filter_eav& filter) {
    bson_builder query;
    mongo::appendPeriod(query, value_field::timestamp, filter.begin, filter.end);
    mongo::appendIn(query, value_field::modem_id, filter.modem_ids);
    return query.take();
}

/// One bulk insert into an empty collection.
template <typename Record>
Contest bulkInsert(mongocxx::v1::collection collection, mongocxx::v1::collection raw,
                   const std::vector<Record>& records,
                   const std::function<void(const std::list<Record>&)>& save) {
    const auto stored = std::make_shared<mongocxx::v1::collection>(std::move(collection));
    const auto measured = std::make_shared<mongocxx::v1::collection>(std::move(raw));
    const std::size_t size = records.size();
    return {.subject =
                [save, list = std::list<Record>(records.begin(), records.end()), size] {
                    save(list);
                    return size;
                },
            .baseline =
                [measured, documents = std::make_shared<Documents>(documentsOf(records)), size] {
                    measured->insert_many(*documents);
                    return size;
                },
            .beforeBlock = [stored] { stored->delete_many(bsoncxx::v1::document::view{}); },
            .afterBlock = [stored, size] { requireDocuments(*stored, size); }};
}

Contest saveValues(Stores& stores, std::size_t size) {
    return bulkInsert<model::dev_value>(
        emptyValues(stores), rawValues(stores), values(size),
        [&repository = stores.eav()](const auto& list) { repository.SaveValues(list); });
}

Contest saveEvents(Stores& stores, std::size_t size) {
    return bulkInsert<model::dev_event>(
        emptyEvents(stores), rawEvents(stores), events(size),
        [&repository = stores.eav()](const auto& list) { repository.SaveEvents(list); });
}

Contest getValues(Stores& stores, std::size_t size) {
    auto collection = emptyValues(stores);
    const auto records = values(size);
    collection.insert_many(documentsOf(records));
    const auto filter = filterFor(records);
    return readContest(
        [&repository = stores.eav(), filter] { return repository.GetValues(filter); },
        [raw = rawValues(stores),
         ready = ReadyQuery{queryFor(filter),
                            mongo::newestFirst(value_field::timestamp, 0)}]() mutable {
            return drain(raw, ready);
        });
}

Contest getEvents(Stores& stores, std::size_t size) {
    auto collection = emptyEvents(stores);
    const auto records = events(size);
    collection.insert_many(documentsOf(records));
    const auto filter = filterFor(records);
    return readContest(
        [&repository = stores.eav(), filter] { return repository.GetEvents(filter); },
        [raw = rawEvents(stores),
         ready = ReadyQuery{queryFor(filter),
                            mongo::newestFirst(event_field::timestamp, 0)}]() mutable {
            return drain(raw, ready);
        });
}

std::vector<ReadyQuery> firstLastQueries(const model::filter_eav& filter) {
    std::vector<ReadyQuery> queries;
    for (const int device : filter.modem_ids) {
        for (const QString& obisCode : filter.obis_codes) {
            bson_builder query;
            mongo::appendPeriod(query, value_field::timestamp, filter.begin, filter.end);
            query.appendInt32(value_field::modem_id, device);
            query.appendString(value_field::obis_code, obisCode);
            query.appendDocument(value_field::value, [](bson_builder& condition) {
                condition.appendUtf8("$type", "number");
            });
            const auto ready = query.take();
            queries.push_back({ready, mongo::newestFirst(value_field::timestamp, 1)});
            queries.push_back({ready, mongo::oldestFirst(value_field::timestamp, 1)});
        }
    }
    return queries;
}

/// `size` readings, half as many pairs of device and OBIS code, two requests each. A block asks for
/// as many devices as give a hundred readings, so there are several for the largest size.
Contest getFirstAndLast(Stores& stores, std::size_t size) {
    auto collection = emptyValues(stores);
    const auto codes = numericObisCodes(std::min<std::size_t>(size / 2, 10));
    const auto devices = static_cast<int>(size / 2 / codes.size());
    const auto records = numericValues(devices, codes);
    collection.insert_many(documentsOf(records));

    struct Part {
        model::filter_eav filter;
        std::vector<ReadyQuery> queries;
    };
    const auto parts = std::make_shared<std::vector<Part>>();
    const int devicesPerPart = std::min(devices, static_cast<int>(50 / codes.size()));
    for (int device = 1; device <= devices; device += devicesPerPart) {
        auto filter = filterFor(records);
        filter.first_last = true;
        filter.obis_codes.assign(codes.begin(), codes.end());
        filter.modem_ids.resize(static_cast<std::size_t>(devicesPerPart));
        std::iota(filter.modem_ids.begin(), filter.modem_ids.end(), device);
        parts->push_back({filter, firstLastQueries(filter)});
    }
    const auto turns = [parts](auto ask) {
        return [=, next = std::size_t{0}]() mutable {
            return ask((*parts)[std::exchange(next, (next + 1) % parts->size())]);
        };
    };
    auto contest = readContest([ask = turns([&repository = stores.eav()](const Part& part) {
                                    return repository.GetValues(part.filter);
                                })]() mutable { return ask(); },
                               turns([raw = rawValues(stores)](const Part& part) mutable {
                                   std::size_t documents = 0;
                                   for (const ReadyQuery& query : part.queries) {
                                       documents += drain(raw, query);
                                   }
                                   return documents;
                               }));
    contest.minPairs = static_cast<int>(parts->size());
    return contest;
}

Contest deleteValues(Stores& stores, std::size_t size) {
    auto collection = emptyValues(stores);
    const auto records = values(size);
    const auto filter = filterFor(records);
    return deleteContest(
        collection, documentsOf(records),
        [&repository = stores.eav(), filter] { repository.DeleteValues(filter); },
        [raw = rawValues(stores), ready = queryFor(filter)]() mutable { raw.delete_many(ready); });
}

Contest deleteEvents(Stores& stores, std::size_t size) {
    auto collection = emptyEvents(stores);
    const auto records = events(size);
    const auto filter = filterFor(records);
    return deleteContest(
        collection, documentsOf(records),
        [&repository = stores.eav(), filter] { repository.DeleteEvents(filter); },
        [raw = rawEvents(stores), ready = queryFor(filter)]() mutable { raw.delete_many(ready); });
}

} // namespace

void registerEav(LazyStores& stores) {
    registerForSizes(stores, "values SaveValues", writeGoal, saveValues);
    registerForSizes(stores, "values GetValues", readGoal, getValues);
    for (const std::size_t size : {2, 100, 10'000}) {
        registerComparison({"values GetValues first_last", std::to_string(size), readGoal},
                           [&stores, size] { return getFirstAndLast(stores(), size); });
    }
    registerForSizes(stores, "values DeleteValues", writeGoal, deleteValues);
    registerForSizes(stores, "events SaveEvents", writeGoal, saveEvents);
    registerForSizes(stores, "events GetEvents", readGoal, getEvents);
    registerForSizes(stores, "events DeleteEvents", writeGoal, deleteEvents);
}

} // namespace bench
