#include "bench/records.h"
#include "bench/store_contests.h"
#include "model/documents/ul_message.h"
#include "mongo/query.h"

#include <mongocxx/v1/insert_one_result.hpp>

#include <set>

namespace bench {

namespace {

namespace field = layout::ul_messages;

constexpr quint64 subjectIds = 1'000'000;
constexpr quint64 baselineIds = 2'000'000;

mongocxx::v1::collection emptyCollection(Stores& stores) {
    return stores.fresh(field::collection, field::indexes);
}

mongocxx::v1::collection rawCollection(Stores& stores) {
    return stores.raw(field::collection);
}

/// All messages: of every device and of all times.
model::filter_roll filterFor(const std::vector<model::message>& messages) {
    std::set<int> devices;
    for (const model::message& message : messages) {
        devices.insert(message.modem_id);
    }
    model::filter_roll filter;
    filter.modem_ids.assign(devices.begin(), devices.end());
    filter.begin = messages.back().timestamp;
    filter.end = messages.front().timestamp;
    return filter;
}

Contest saveMessage(Stores& stores, std::size_t size) {
    auto collection = emptyCollection(stores);
    const std::size_t count = recordsToInsert(size);
    return insertByCall(
        collection, size,
        [&repository = stores.uplinks(), records = messages(count, subjectIds)](std::size_t i) {
            repository.SaveMessage(records[i]);
        },
        [raw = rawCollection(stores),
         documents = std::make_shared<Documents>(documentsOf(messages(count, baselineIds)))](
            std::size_t i) mutable { raw.insert_one((*documents)[i]); });
}

Contest getMessages(Stores& stores, std::size_t size) {
    auto collection = emptyCollection(stores);
    const auto records = messages(size, subjectIds);
    collection.insert_many(documentsOf(records));
    const auto filter = filterFor(records);

    bson_utils::bson_builder query;
    mongo::appendPeriod(query, field::timestamp, filter.begin, filter.end);
    mongo::appendIn(query, field::modem_id, filter.modem_ids);
    return readContest(
        [&repository = stores.uplinks(), filter] { return repository.GetMessages(filter); },
        [raw = rawCollection(stores),
         ready = ReadyQuery{query.take(), mongo::newestFirst(field::timestamp, 0)}]() mutable {
            return drain(raw, ready);
        });
}

Contest deleteMessages(Stores& stores, std::size_t size) {
    auto collection = emptyCollection(stores);
    const auto records = messages(size, subjectIds);
    const auto filter = filterFor(records);
    bson_utils::bson_builder query;
    mongo::appendIn(query, field::modem_id, filter.modem_ids);
    return deleteContest(
        collection, documentsOf(records),
        [&repository = stores.uplinks(), filter] { repository.DeleteMessages(filter); },
        [raw = rawCollection(stores), ready = query.take()]() mutable { raw.delete_many(ready); });
}

} // namespace

void registerUplinks(LazyStores& stores) {
    registerForSizes(stores, "uplink SaveMessage", writeGoal, saveMessage);
    registerForSizes(stores, "uplink GetMessages", readGoal, getMessages);
    registerForSizes(stores, "uplink DeleteMessages", writeGoal, deleteMessages);
}

} // namespace bench
