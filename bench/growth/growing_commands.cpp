#include "bench/growth/placement.h"
#include "bench/queries.h"
#include "bench/records.h"
#include "model/documents/dl_message.h"
#include "mongo/query.h"

#include <bsoncxx/v1/types/view.hpp>
#include <mongocxx/v1/update_one_result.hpp>

namespace bench {

namespace {

namespace field = layout::dl_messages;
using Repository = interfaces::IDLAPPMessageRepository;
using dl_status = model::dl_message::dl_status;

constexpr std::size_t commandsById = 100;
constexpr std::size_t savedAtOnce = 100;

/// All but the first ones have been executed.
Documents documentsToStore(std::size_t count, std::size_t first) {
    auto records = commands(count, 1, first);
    if (first >= fewestStored) {
        for (model::dl_message& command : records) {
            command.status = dl_status::EXECUTED;
        }
    }
    return placed(std::move(records), first);
}

GrowthStep reading(Stores& stores, const RawCollectionPtr& collection, const char* operation,
                   decltype(&Repository::GetCommands) get, Commands which, const Asked& asked) {
    const auto filter = filterFor<model::filter_dl>(asked);
    const auto queries = newestOf(filter, which);
    return {.operation = operation,
            .devices = filter.modem_ids.size(),
            .contest =
                readContest([&repository = stores.downlinks(), get,
                             filter] { return (repository.*get)(filter); },
                            collection, queries, readyRecords(commands(asked.records, 1), asked)),
            .plan = stores.planOf(field::collection, queries.front())};
}

std::vector<QString> idsOfNewest(const RawCollectionPtr& collection) {
    std::vector<QString> ids;
    auto cursor = collection->unmeasured.find(bsoncxx::v1::document::view{},
                                              mongo::newestFirst(field::timestamp, commandsById));
    for (const auto& command : cursor) {
        ids.push_back(QString::fromStdString(command["_id"].get_oid().value.to_string()));
    }
    return ids;
}

void addByIds(Stores& stores, const RawCollectionPtr& collection, std::vector<GrowthStep>& steps) {
    auto& repository = stores.downlinks();
    const auto ids = idsOfNewest(collection);
    const auto queries = conditionsOf(ids);
    const QString plan = stores.planOf(field::collection, {queries.front(), {}});
    steps.push_back(
        {.operation = "downlink GetById",
         .contest = callByCall(
             ids.size(), [&repository, ids](std::size_t i) { repository.GetById(ids[i]); },
             [collection, queries](std::size_t i) { collection->measured.find_one(queries[i]); }),
         .plan = plan});
    steps.push_back(
        {.operation = "downlink SetStatus",
         .contest = callByCall(
             ids.size(),
             [&repository, ids](std::size_t i) {
                 repository.SetStatus(ids[i], dl_status::PENDING);
             },
             [collection, queries, update = settingStatus(dl_status::WAIT_DATA)](std::size_t i) {
                 collection->measured.update_one(queries[i], update);
             }),
         .plan = plan});
}

void addWrites(Stores& stores, const RawCollectionPtr& collection, std::vector<GrowthStep>& steps) {
    auto& repository = stores.downlinks();
    const auto records = ofNewcomer(commands(savedAtOnce, 1));
    const auto documents = documentsOf(records);
    const auto filter = filterForNewcomer<model::filter_dl>();
    const auto conditions = conditionsOf(filter, Commands::all);
    steps.push_back({.operation = "downlink SaveMessage",
                     .contest = saveAndRemove(
                         collection,
                         [&repository, records] {
                             for (model::dl_message command : records) {
                                 repository.SaveMessage(command);
                             }
                             return records.size();
                         },
                         insertEach(collection, documents), documents.size(), conditions),
                     .plan = {}});
    steps.push_back({.operation = "downlink DeleteMessages",
                     .contest = removeSaved(
                         collection, documents,
                         [&repository, filter] {
                             repository.DeleteMessages(filter.modem_ids, filter.begin, filter.end);
                         },
                         conditions),
                     .plan = stores.planOf(field::collection, {conditions.front(), {}})});
}

std::vector<GrowthStep> steps(Stores& stores, const RawCollectionPtr& collection) {
    std::vector<GrowthStep> steps;
    for (const Asked& asked : allAsked) {
        steps.push_back(reading(stores, collection, "downlink GetCommands",
                                &Repository::GetCommands, Commands::all, asked));
        steps.push_back(reading(stores, collection, "downlink GetNotAckCommands",
                                &Repository::GetNotAckCommands, Commands::notAcknowledged, asked));
    }
    addByIds(stores, collection, steps);
    addWrites(stores, collection, steps);
    return steps;
}

} // namespace

Growing growingCommands(Stores& stores) {
    return growingCollection(
        stores, field::collection, field::indexes, documentsToStore,
        [&stores](const RawCollectionPtr& collection) { return steps(stores, collection); });
}

} // namespace bench
