#include "bench/queries.h"
#include "bench/records.h"
#include "bench/store_contests.h"
#include "model/documents/ul_message.h"
#include "mongo/query.h"

namespace bench {

namespace {

namespace field = layout::ul_messages;
using bson_utils::bson_builder;

constexpr quint64 pluginIds = 1'000'000;
constexpr quint64 rawIds = 2'000'000;

RawCollectionPtr emptyCollection(Stores& stores) {
    return stores.emptyCollection(field::collection, field::indexes);
}

/// All messages: of every device and of all times.
model::filter_roll filterFor(const std::vector<model::message>& messages) {
    const auto devices = devicesOf(messages);
    model::filter_roll filter;
    filter.modem_ids.assign(devices.begin(), devices.end());
    filter.begin = messages.back().timestamp;
    filter.end = messages.front().timestamp;
    return filter;
}

Contest saveMessage(Stores& stores, std::size_t size) {
    const std::size_t count = recordsToInsert(size);
    return insertByCall(
        emptyCollection(stores), size,
        [&repository = stores.uplinks(), records = messages(count, pluginIds)](std::size_t i) {
            repository.SaveMessage(records[i]);
        },
        documentsOf(messages(count, rawIds)));
}

Contest getMessages(Stores& stores, std::size_t size) {
    const auto collection = emptyCollection(stores);
    const auto records = messages(size, pluginIds);
    collection->put(documentsOf(records));
    const auto filter = filterFor(records);
    return readContest(
        [&repository = stores.uplinks(), filter] { return repository.GetMessages(filter); },
        collection, {newestOf(filter)}, readBack(records));
}

Contest deleteMessages(Stores& stores, std::size_t size) {
    const auto records = messages(size, pluginIds);
    const auto filter = filterFor(records);
    bson_builder query;
    mongo::appendIn(query, field::modem_id, filter.modem_ids);
    return deleteContest(
        emptyCollection(stores), documentsOf(records),
        [&repository = stores.uplinks(), filter] { repository.DeleteMessages(filter); },
        {query.take()});
}

} // namespace

void addUplinks(Comparisons& comparisons, LazyStores& stores) {
    addForSizes(comparisons, stores, "uplink SaveMessage", writeGoals, saveMessage);
    addForSizes(comparisons, stores, "uplink GetMessages", costAtMost(1.10, 1.20), getMessages,
                sizes, " mixed makes");
    addForSizes(comparisons, stores, "uplink DeleteMessages", writeGoals, deleteMessages);
}

} // namespace bench
