#include "bench/queries.h"
#include "bench/records.h"
#include "bench/store_contests.h"
#include "model/documents/dl_message.h"

#include <mongocxx/v1/update_one_result.hpp>

#include <numeric>
#include <optional>

namespace bench {

namespace {

namespace field = layout::dl_messages;
using dl_status = model::dl_message::dl_status;
using Repository = interfaces::IDLAPPMessageRepository;

RawCollectionPtr emptyCollection(Stores& stores) {
    return stores.emptyCollection(field::collection, field::indexes);
}

/// Ten commands a device, a hundred where there are many.
std::vector<model::dl_message> someCommands(std::size_t size) {
    return commands(size, size > 100 ? 100 : 10);
}

model::filter_dl filterFor(const std::vector<model::dl_message>& commands) {
    model::filter_dl filter;
    filter.modem_ids.resize(static_cast<std::size_t>(commands.back().modem_id));
    std::iota(filter.modem_ids.begin(), filter.modem_ids.end(), 1);
    filter.begin = commands.back().timestamp;
    filter.end = commands.front().timestamp;
    return filter;
}

/// Stores commands; gives their ids.
std::vector<QString> storeCommands(Stores& stores, std::size_t size) {
    std::vector<QString> ids;
    for (model::dl_message& command : someCommands(size)) {
        stores.downlinks().SaveMessage(command);
        ids.push_back(command.db_id);
    }
    return ids;
}

Contest saveMessage(Stores& stores, std::size_t size) {
    const auto records = someCommands(recordsToInsert(size));
    // The plug-in writes the id that it was given into the record.
    const auto own = std::make_shared<std::vector<model::dl_message>>(records);
    return insertByCall(
        emptyCollection(stores), size,
        [&repository = stores.downlinks(), own](std::size_t i) {
            repository.SaveMessage((*own)[i]);
        },
        documentsOf(records));
}

Contest getById(Stores& stores, std::size_t size) {
    const auto collection = emptyCollection(stores);
    const auto ids = storeCommands(stores, size);
    const auto queries = conditionsOf(ids);
    return callByCall(
        size,
        [&repository = stores.downlinks(), ids](std::size_t i) { repository.GetById(ids[i]); },
        [collection, queries](std::size_t i) { collection->measured.find_one(queries[i]); },
        [collection, queries, ready = readBack(someCommands(size))](std::size_t i) {
            collection->measured.find_one(queries[i]);
            deepCopy(ready[i]);
        });
}

Contest setStatus(Stores& stores, std::size_t size) {
    const auto collection = emptyCollection(stores);
    const auto ids = storeCommands(stores, size);
    // Either side undoes what the other did, so that every call changes its document.
    return callByCall(
        size,
        [&repository = stores.downlinks(), ids](std::size_t i) {
            repository.SetStatus(ids[i], dl_status::EXECUTED);
        },
        [collection, queries = conditionsOf(ids), update = settingStatus(dl_status::WAIT_DATA)](
            std::size_t i) { collection->measured.update_one(queries[i], update); });
}

Prepare getCommands(decltype(&Repository::GetCommands) get, Commands which) {
    return [=](Stores& stores, std::size_t size) {
        const auto collection = emptyCollection(stores);
        const auto records = someCommands(size);
        collection->put(documentsOf(records));
        const auto filter = filterFor(records);
        return readContest(
            [&repository = stores.downlinks(), get, filter] { return (repository.*get)(filter); },
            collection, newestOf(filter, which), readBack(records));
    };
}

Contest deleteMessages(Stores& stores, std::size_t size) {
    const auto records = someCommands(size);
    const auto filter = filterFor(records);
    return deleteContest(
        emptyCollection(stores), documentsOf(records),
        [&repository = stores.downlinks(), filter] {
            repository.DeleteMessages(filter.modem_ids, filter.begin, filter.end);
        },
        conditionsOf(filter, Commands::all));
}

} // namespace

void addDownlinks(Comparisons& comparisons, LazyStores& stores) {
    addForSizes(comparisons, stores, "downlink SaveMessage", writeGoals, saveMessage);
    addForSizes(comparisons, stores, "downlink GetById", readGoals, getById);
    addForSizes(comparisons, stores, "downlink GetCommands", manyGoals,
                getCommands(&Repository::GetCommands, Commands::all));
    addForSizes(comparisons, stores, "downlink GetNotAckCommands", manyGoals,
                getCommands(&Repository::GetNotAckCommands, Commands::notAcknowledged));
    addForSizes(comparisons, stores, "downlink SetStatus", writeGoals, setStatus);
    addForSizes(comparisons, stores, "downlink DeleteMessages", writeGoals, deleteMessages);
}

} // namespace bench
