#include "bench/records.h"
#include "bench/store_contests.h"
#include "model/documents/dl_message.h"
#include "mongo/query.h"

#include <bsoncxx/v1/types/view.hpp>
#include <mongocxx/v1/insert_one_result.hpp>
#include <mongocxx/v1/update_one_result.hpp>

#include <numeric>

namespace bench {

namespace {

namespace field = layout::dl_messages;
using bson_utils::bson_builder;
using dl_status = model::dl_message::dl_status;

mongocxx::v1::collection emptyCollection(Stores& stores) {
    return stores.fresh(field::collection, field::indexes);
}

mongocxx::v1::collection rawCollection(Stores& stores) {
    return stores.raw(field::collection);
}

/// Ten commands a device, a hundred where there are many.
std::size_t perDevice(std::size_t size) {
    return size > 100 ? 100 : 10;
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
std::vector<QString> store(Stores& stores, std::size_t size) {
    std::vector<QString> ids;
    for (model::dl_message& command : commands(size, perDevice(size))) {
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

Contest saveMessage(Stores& stores, std::size_t size) {
    auto collection = emptyCollection(stores);
    const auto records = commands(recordsToInsert(size), perDevice(size));
    return insertByCall(
        collection, size,
        [&repository = stores.downlinks(),
         stored = std::make_shared<std::vector<model::dl_message>>(records)](std::size_t i) {
            repository.SaveMessage((*stored)[i]);
        },
        [raw = rawCollection(stores),
         documents = std::make_shared<Documents>(documentsOf(records))](std::size_t i) mutable {
            raw.insert_one((*documents)[i]);
        });
}

Contest getById(Stores& stores, std::size_t size) {
    auto collection = emptyCollection(stores);
    const auto ids = store(stores, size);
    return callByCall(
        size,
        [&repository = stores.downlinks(), ids](std::size_t i) { repository.GetById(ids[i]); },
        [raw = rawCollection(stores), queries = std::make_shared<Documents>(queriesById(ids))](
            std::size_t i) mutable { raw.find_one((*queries)[i]); });
}

Contest setStatus(Stores& stores, std::size_t size) {
    auto collection = emptyCollection(stores);
    const auto ids = store(stores, size);
    // Either side undoes what the other did, so that every call changes its document.
    const auto update = [](dl_status status) {
        bson_builder update;
        update.appendDocument("$set", [&](bson_builder& set) {
            set.appendInt32(field::status, static_cast<std::int32_t>(status));
        });
        return update.take();
    };
    return callByCall(
        size,
        [&repository = stores.downlinks(), ids](std::size_t i) {
            repository.SetStatus(ids[i], dl_status::EXECUTED);
        },
        [raw = rawCollection(stores), queries = std::make_shared<Documents>(queriesById(ids)),
         ready = update(dl_status::WAIT_DATA)](std::size_t i) mutable {
            raw.update_one((*queries)[i], ready);
        });
}

/// One request for each device.
Documents queriesByDevice(const model::filter_dl& filter, bool notAcknowledged) {
    Documents queries;
    for (const int device : filter.modem_ids) {
        bson_builder query;
        query.appendInt32(field::modem_id, device);
        mongo::appendPeriod(query, field::timestamp, filter.begin, filter.end);
        if (notAcknowledged) {
            query.appendArray("$or", [](bson_builder& alternatives) {
                alternatives.appendDocument("0", [](bson_builder& alternative) {
                    alternative.appendInt32(field::status, 1);
                });
                alternatives.appendDocument("1", [](bson_builder& alternative) {
                    alternative.appendInt32(field::status, 0);
                });
            });
        }
        queries.push_back(query.take());
    }
    return queries;
}

using Get = std::shared_ptr<std::map<int, std::list<model::dl_message>>> (
    interfaces::IDLAPPMessageRepository::*)(const model::filter_dl&);

Contest getCommands(Stores& stores, std::size_t size, Get get, bool notAcknowledged) {
    auto collection = emptyCollection(stores);
    const auto records = commands(size, perDevice(size));
    collection.insert_many(documentsOf(records));
    const auto filter = filterFor(records);
    const auto ready = std::make_shared<std::vector<ReadyQuery>>();
    for (auto& query : queriesByDevice(filter, notAcknowledged)) {
        ready->push_back({std::move(query), mongo::newestFirst(field::timestamp, 0)});
    }
    return readContest(
        [&repository = stores.downlinks(), get, filter] { return (repository.*get)(filter); },
        [raw = rawCollection(stores), ready]() mutable {
            std::size_t documents = 0;
            for (const ReadyQuery& query : *ready) {
                documents += drain(raw, query);
            }
            return documents;
        });
}

Contest deleteMessages(Stores& stores, std::size_t size) {
    auto collection = emptyCollection(stores);
    const auto records = commands(size, perDevice(size));
    const auto filter = filterFor(records);
    return deleteContest(
        collection, documentsOf(records),
        [&repository = stores.downlinks(), filter] {
            repository.DeleteMessages(filter.modem_ids, filter.begin, filter.end);
        },
        [raw = rawCollection(stores),
         queries = std::make_shared<Documents>(queriesByDevice(filter, false))]() mutable {
            for (const auto& query : *queries) {
                raw.delete_many(query);
            }
        });
}

} // namespace

void registerDownlinks(LazyStores& stores) {
    using Repository = interfaces::IDLAPPMessageRepository;
    registerForSizes(stores, "downlink SaveMessage", writeGoal, saveMessage);
    registerForSizes(stores, "downlink GetById", readGoal, getById);
    registerForSizes(stores, "downlink GetCommands", readGoal,
                     [](Stores& connected, std::size_t size) {
                         return getCommands(connected, size, &Repository::GetCommands, false);
                     });
    registerForSizes(stores, "downlink GetNotAckCommands", readGoal,
                     [](Stores& connected, std::size_t size) {
                         return getCommands(connected, size, &Repository::GetNotAckCommands, true);
                     });
    registerForSizes(stores, "downlink SetStatus", writeGoal, setStatus);
    registerForSizes(stores, "downlink DeleteMessages", writeGoal, deleteMessages);
}

} // namespace bench
