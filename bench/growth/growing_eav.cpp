#include "bench/growth/placement.h"
#include "bench/queries.h"
#include "bench/records.h"
#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"

#include <mongocxx/v1/insert_many_result.hpp>

namespace bench {

namespace {

using Repository = interfaces::IEAVRepository;

constexpr std::size_t savedAtOnce = 1000;

/// The plug-in's operations on one kind of record, with their names.
template <typename Record>
struct Kind {
    std::string_view collection;
    std::span<const layout::index> indexes;
    std::vector<Record> (*make)(std::size_t count, std::size_t first);
    const char* saving = nullptr;
    void (Repository::*save)(const std::list<Record>&);
    const char* getting = nullptr;
    std::shared_ptr<mongo::by_device<Record>> (Repository::*get)(const model::filter_eav&);
    const char* erasing = nullptr;
    void (Repository::*erase)(const model::filter_eav&) = nullptr;
};

constexpr Kind<model::dev_value> valueKind{layout::eav_values::collection,
                                           layout::eav_values::indexes,
                                           values,
                                           "values SaveValues",
                                           &Repository::SaveValues,
                                           "values GetValues",
                                           &Repository::GetValues,
                                           "values DeleteValues",
                                           &Repository::DeleteValues};
constexpr Kind<model::dev_event> eventKind{layout::eav_events::collection,
                                           layout::eav_events::indexes,
                                           events,
                                           "events SaveEvents",
                                           &Repository::SaveEvents,
                                           "events GetEvents",
                                           &Repository::GetEvents,
                                           "events DeleteEvents",
                                           &Repository::DeleteEvents};

template <typename Record>
std::vector<GrowthStep> reads(Stores& stores, const RawCollectionPtr& collection,
                              const Kind<Record>& kind) {
    std::vector<GrowthStep> steps;
    for (const Asked& asked : allAsked) {
        const auto filter = filterFor<model::filter_eav>(asked);
        const auto query = newestOf(filter);
        steps.push_back({.operation = kind.getting,
                         .devices = filter.modem_ids.size(),
                         .contest = readContest([&repository = stores.eav(), get = kind.get,
                                                 filter] { return (repository.*get)(filter); },
                                                collection, {query},
                                                readyRecords(kind.make(asked.records, 0), asked)),
                         .plan = stores.planOf(kind.collection, query)});
    }
    return steps;
}

template <typename Record>
void addWrites(Stores& stores, const RawCollectionPtr& collection, const Kind<Record>& kind,
               std::vector<GrowthStep>& steps) {
    auto& repository = stores.eav();
    const auto records = ofNewcomer(kind.make(savedAtOnce, 0));
    const auto documents = documentsOf(records);
    const auto filter = filterForNewcomer<model::filter_eav>();
    const auto conditions = conditionsOf(filter);
    steps.push_back(
        {.operation = kind.saving,
         .contest = saveAndRemove(
             collection,
             [&repository, save = kind.save, list = std::list(records.begin(), records.end())] {
                 (repository.*save)(list);
                 return list.size();
             },
             [collection, documents] {
                 collection->measured.insert_many(documents);
                 return documents.size();
             },
             documents.size(), {conditions}),
         .plan = {}});
    steps.push_back({.operation = kind.erasing,
                     .contest = removeSaved(
                         collection, documents,
                         [&repository, erase = kind.erase, filter] { (repository.*erase)(filter); },
                         {conditions}),
                     .plan = stores.planOf(kind.collection, {conditions, {}})});
}

/// Each device takes two requests for each OBIS code.
void addFirstAndLast(Stores& stores, const RawCollectionPtr& collection,
                     std::vector<GrowthStep>& steps) {
    for (Asked asked : allAsked) {
        asked.seconds = fewestStored;
        auto filter = filterFor<model::filter_eav>(asked);
        const auto codes = numericObisCodes(asked.devices > busyDevices ? 1 : 5);
        filter.obis_codes.assign(codes.begin(), codes.end());
        filter.first_last = true;
        const auto queries = firstAndLastOf(filter);
        steps.push_back(
            {.operation = "values GetValues first_last",
             .devices = filter.modem_ids.size(),
             .contest = readContest(
                 [&repository = stores.eav(), filter] { return repository.GetValues(filter); },
                 collection, queries, readyRecords(values(asked.records), asked)),
             .plan = stores.planOf(layout::eav_values::collection, queries.front())});
    }
}

template <typename Record>
Growing growing(Stores& stores, const Kind<Record>& kind) {
    const auto documentsToStore = [kind](std::size_t count, std::size_t first) {
        return placed(kind.make(count, first), first);
    };
    const auto steps = [&stores, kind](const RawCollectionPtr& collection) {
        auto steps = reads(stores, collection, kind);
        if constexpr (std::is_same_v<Record, model::dev_value>) {
            addFirstAndLast(stores, collection, steps);
        }
        addWrites(stores, collection, kind, steps);
        return steps;
    };
    return growingCollection(stores, kind.collection, kind.indexes, documentsToStore, steps);
}

} // namespace

Growing growingValues(Stores& stores) {
    return growing(stores, valueKind);
}

Growing growingEvents(Stores& stores) {
    return growing(stores, eventKind);
}

} // namespace bench
