#include "bench/queries.h"

#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "model/documents/dl_message.h"
#include "model/documents/ul_message.h"
#include "mongo/query.h"

#include <bsoncxx/v1/oid.hpp>

namespace bench {

namespace {

namespace value_field = layout::eav_values;
namespace command_field = layout::dl_messages;
using bson_utils::bson_builder;
using dl_status = model::dl_message::dl_status;

// The same names in each collection.
constexpr auto timestamp = layout::ul_messages::timestamp;
constexpr auto modem_id = layout::ul_messages::modem_id;
static_assert(timestamp == layout::eav_values::timestamp &&
              timestamp == layout::eav_events::timestamp &&
              timestamp == layout::dl_messages::timestamp);
static_assert(modem_id == layout::eav_values::modem_id &&
              modem_id == layout::eav_events::modem_id &&
              modem_id == layout::dl_messages::modem_id);

template <typename Filter>
bsoncxx::v1::document::value periodAndDevices(const Filter& filter) {
    bson_builder query;
    mongo::appendPeriod(query, timestamp, filter.begin, filter.end);
    mongo::appendIn(query, modem_id, filter.modem_ids);
    return query.take();
}

bsoncxx::v1::document::value numbersOf(const model::filter_eav& filter, int device,
                                       const QString& obisCode) {
    bson_builder query;
    mongo::appendPeriod(query, timestamp, filter.begin, filter.end);
    query.appendInt32(modem_id, device);
    query.appendString(value_field::obis_code, obisCode);
    query.appendDocument(value_field::value,
                         [](bson_builder& condition) { condition.appendUtf8("$type", "number"); });
    return query.take();
}

void appendNotAcknowledged(bson_builder& query) {
    const auto either = [](dl_status status) {
        return [status](bson_builder& alternative) {
            alternative.appendInt32(command_field::status, static_cast<std::int32_t>(status));
        };
    };
    query.appendArray("$or", [&](bson_builder& alternatives) {
        alternatives.appendDocument("0", either(dl_status::WAIT_DATA));
        alternatives.appendDocument("1", either(dl_status::PENDING));
    });
}

} // namespace

bsoncxx::v1::document::value conditionsOf(const model::filter_roll& filter) {
    return periodAndDevices(filter);
}

bsoncxx::v1::document::value conditionsOf(const model::filter_eav& filter) {
    return periodAndDevices(filter);
}

ReadyQuery newestOf(const model::filter_roll& filter) {
    return {conditionsOf(filter), mongo::newestFirst(timestamp, 0)};
}

ReadyQuery newestOf(const model::filter_eav& filter) {
    return {conditionsOf(filter), mongo::newestFirst(timestamp, 0)};
}

std::vector<ReadyQuery> firstAndLastOf(const model::filter_eav& filter) {
    std::vector<ReadyQuery> queries;
    for (const int device : filter.modem_ids) {
        for (const QString& obisCode : filter.obis_codes) {
            const auto numbers = numbersOf(filter, device, obisCode);
            queries.push_back({numbers, mongo::newestFirst(timestamp, 1)});
            queries.push_back({numbers, mongo::oldestFirst(timestamp, 1)});
        }
    }
    return queries;
}

Documents conditionsOf(const model::filter_dl& filter, Commands which) {
    Documents queries;
    for (const int device : filter.modem_ids) {
        bson_builder query;
        query.appendInt32(modem_id, device);
        mongo::appendPeriod(query, timestamp, filter.begin, filter.end);
        if (which == Commands::notAcknowledged) {
            appendNotAcknowledged(query);
        }
        queries.push_back(query.take());
    }
    return queries;
}

std::vector<ReadyQuery> newestOf(const model::filter_dl& filter, Commands which) {
    std::vector<ReadyQuery> queries;
    for (auto& conditions : conditionsOf(filter, which)) {
        queries.push_back({std::move(conditions), mongo::newestFirst(timestamp, 0)});
    }
    return queries;
}

bsoncxx::v1::document::value settingStatus(dl_status status) {
    bson_builder update;
    update.appendDocument("$set", [&](bson_builder& set) {
        set.appendInt32(command_field::status, static_cast<std::int32_t>(status));
    });
    return update.take();
}

Documents conditionsOf(const std::vector<QString>& ids) {
    Documents queries;
    for (const QString& id : ids) {
        bson_builder query;
        query.appendOid(command_field::id, bsoncxx::v1::oid{id.toStdString()});
        queries.push_back(query.take());
    }
    return queries;
}

} // namespace bench
