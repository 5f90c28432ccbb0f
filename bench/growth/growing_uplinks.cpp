#include "bench/growth/placement.h"
#include "bench/queries.h"
#include "bench/records.h"
#include "model/documents/ul_message.h"

namespace bench {

namespace {

constexpr std::size_t savedAtOnce = 100;
/// Beyond the ids of what is stored.
constexpr quint64 newcomersFirstId = 1'000'000'000;

Documents documentsToStore(std::size_t count, std::size_t first) {
    return placed(messages(count, 0, first), first);
}

std::vector<GrowthStep> steps(Stores& stores, const RawCollectionPtr& collection) {
    auto& repository = stores.uplinks();
    std::vector<GrowthStep> steps;
    for (const Asked& asked : allAsked) {
        const auto filter = filterFor<model::filter_roll>(asked);
        const auto query = newestOf(filter);
        steps.push_back({.operation = "uplink GetMessages",
                         .devices = filter.modem_ids.size(),
                         .contest = readContest(
                             [&repository, filter] { return repository.GetMessages(filter); },
                             collection, {query}, readyRecords(messages(asked.records, 0), asked)),
                         .plan = stores.planOf(layout::ul_messages::collection, query)});
    }
    const auto records = ofNewcomer(messages(savedAtOnce, newcomersFirstId));
    const auto documents = documentsOf(records);
    const auto filter = filterForNewcomer<model::filter_roll>();
    const auto conditions = conditionsOf(filter);
    steps.push_back({.operation = "uplink SaveMessage",
                     .contest = saveAndRemove(collection,
                                              [&repository, records] {
                                                  for (const model::message& message : records) {
                                                      repository.SaveMessage(message);
                                                  }
                                                  return records.size();
                                              },
                                              insertEach(collection, documents), documents.size(),
                                              {conditions}),
                     .plan = {}});
    steps.push_back(
        {.operation = "uplink DeleteMessages",
         .contest = removeSaved(collection, documents,
                                [&repository, filter] { repository.DeleteMessages(filter); },
                                {conditions}),
         .plan = stores.planOf(layout::ul_messages::collection, {conditions, {}})});
    return steps;
}

} // namespace

Growing growingUplinks(Stores& stores) {
    return growingCollection(
        stores, layout::ul_messages::collection, layout::ul_messages::indexes, documentsToStore,
        [&stores](const RawCollectionPtr& collection) { return steps(stores, collection); });
}

} // namespace bench
