#include "bench/records.h"
#include "bench/store_contests.h"
#include "model/documents/dl_message.h"
#include "mongo/query.h"

#include <mongocxx/v1/update_one_result.hpp>

#include <numeric>
#include <optional>

namespace bench {

namespace {

namespace field = layout::dl_messages;
using bson_utils::bson_builder;
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

Documents queriesById(const std::vector<QString>& ids) {
    Documents queries;
    for (const QString& id : ids) {
        bson_builder query;
        query.appendOid(field::id, bsoncxx::v1::oid{id.toStdString()});
        queries.push_back(query.take());
    }
    return queries;
}

bsoncxx::v1::document::value settingStatus(dl_status status) {
    bson_builder update;
    update.appendDocument("$set", [&](bson_builder& set) {
        set.appendInt32(field::status, static_cast<std::int32_t>(status));
    });
    return update.take();
}

void appendNotAcknowledged(bson_builder& query) {
    const auto either = [](dl_status status) {
        return [status](bson_builder& alternative) {
            alternative.appendInt32(field::status, static_cast<std::int32_t>(status));
        };
    };
    query.appendArray("$or", [&](bson_builder& alternatives) {
        alternatives.appendDocument("0", either(dl_status::WAIT_DATA));
        alternatives.appendDocument("1", either(dl_status::PENDING));
    });
}

enum class Which { all, notAcknowledged };

/// One request for each device.
Documents queriesByDevice(const model::filter_dl& filter, Which which) {
    Documents queries;
    for (const int device : filter.modem_ids) {
        bson_builder query;
        query.appendInt32(field::modem_id, device);
        mongo::appendPeriod(query, field::timestamp, filter.begin, filter.end);
        if (which == Which::notAcknowledged) {
            appendNotAcknowledged(query);
        }
        queries.push_back(query.take());
    }
    return queries;
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
    const auto queries = queriesById(ids);
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
        [collection, queries = queriesById(ids), update = settingStatus(dl_status::WAIT_DATA)](
            std::size_t i) { collection->measured.update_one(queries[i], update); });
}

Prepare getCommands(decltype(&Repository::GetCommands) get, Which which) {
    return [=](Stores& stores, std::size_t size) {
        const auto collection = emptyCollection(stores);
        const auto records = someCommands(size);
        collection->put(documentsOf(records));
        const auto filter = filterFor(records);
        std::vector<ReadyQuery> queries;
        for (auto& query : queriesByDevice(filter, which)) {
            queries.push_back({std::move(query), mongo::newestFirst(field::timestamp, 0)});
        }
        return readContest(
            [&repository = stores.downlinks(), get, filter] { return (repository.*get)(filter); },
            collection, std::move(queries), readBack(records));
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
        queriesByDevice(filter, Which::all));
}

} // namespace

void addDownlinks(Comparisons& comparisons, LazyStores& stores) {
    addForSizes(comparisons, stores, "downlink SaveMessage", writeGoals, saveMessage);
    addForSizes(comparisons, stores, "downlink GetById", readGoals, getById);
    addForSizes(comparisons, stores, "downlink GetCommands", manyGoals,
                getCommands(&Repository::GetCommands, Which::all));
    addForSizes(comparisons, stores, "downlink GetNotAckCommands", manyGoals,
                getCommands(&Repository::GetNotAckCommands, Which::notAcknowledged));
    addForSizes(comparisons, stores, "downlink SetStatus", writeGoals, setStatus);
    addForSizes(comparisons, stores, "downlink DeleteMessages", writeGoals, deleteMessages);
}

} // namespace bench
