#include "mongo/eav_reopository_mongo.h"

#include "model/bson_utils.h"
#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "mongo/operation_log.h"

#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/cursor.hpp>
#include <mongocxx/v1/delete_many_result.hpp>
#include <mongocxx/v1/insert_many_result.hpp>

#include <ranges>

namespace mongo {

namespace value_field = layout::eav_values;
namespace event_field = layout::eav_events;
using bson_utils::bson_builder;

namespace {

template <typename Record>
void insertAll(mongocxx::v1::collection collection, const std::list<Record>& records) {
    if (records.empty()) {
        return;
    }
    // Converted one by one as the driver takes them up, so no second copy of a long list is kept.
    const auto documents = records | std::views::transform([](const Record& record) {
                               return bson_utils::toBson(record);
                           });
    collection.insert_many(documents.begin(), documents.end());
}

struct texts_of {
    std::string_view field;
    const std::list<QString>& texts;
};

/// Period and devices, and those of the filter's lists of texts that an operation selects by.
bsoncxx::v1::document::value conditionsOf(const model::filter_eav& filter,
                                          std::initializer_list<texts_of> lists) {
    static_assert(value_field::timestamp == event_field::timestamp &&
                  value_field::modem_id == event_field::modem_id);
    bson_builder query;
    appendPeriod(query, value_field::timestamp, filter.begin, filter.end);
    appendIn(query, value_field::modem_id, filter.modem_ids);
    for (const auto& [field, texts] : lists) {
        appendIn(query, field, texts);
    }
    return query.take();
}

/// The numeric values of one device and OBIS code.
bsoncxx::v1::document::value conditionsOf(const model::filter_eav& filter, int modem_id,
                                          const QString& obis_code) {
    bson_builder query;
    appendPeriod(query, value_field::timestamp, filter.begin, filter.end);
    query.appendInt32(value_field::modem_id, modem_id);
    query.appendString(value_field::obis_code, obis_code);
    appendIn(query, value_field::tag, filter.tags);
    query.appendDocument(value_field::value,
                         [](bson_builder& condition) { condition.appendUtf8("$type", "number"); });
    return query.take();
}

void findFirstAndLast(mongocxx::v1::collection& collection, const model::filter_eav& filter,
                      by_device<model::dev_value>& found) {
    bson_utils::query_memory memory;
    for (const int modem_id : filter.modem_ids) {
        for (const QString& obis_code : filter.obis_codes) {
            const auto query = conditionsOf(filter, modem_id, obis_code);
            // Newest first, then oldest; a single reading is deliberately given twice.
            for (const auto& options :
                 {newestFirst(value_field::timestamp, 1), oldestFirst(value_field::timestamp, 1)}) {
                auto cursor = collection.find(query, options);
                for (const auto& document : cursor) {
                    found[modem_id].push_back(
                        bson_utils::readDocument<model::dev_value>(document, memory));
                }
            }
        }
    }
}

void findPlain(mongocxx::v1::collection& collection, const model::filter_eav& filter,
               by_device<model::dev_value>& found) {
    const auto query = conditionsOf(
        filter, {{value_field::obis_code, filter.obis_codes}, {value_field::tag, filter.tags}});
    collect(collection.find(query, newestFirst(value_field::timestamp, filter.limit)), found);
}

} // namespace

EAVRepositoryMongo::EAVRepositoryMongo(const mongocxx::v1::database& database)
    : m_database(database) {}

void EAVRepositoryMongo::SaveValues(const std::list<model::dev_value>& values) {
    const operation_log log;
    insertAll(m_database.collection(value_field::collection), values);
    log.write(QStringLiteral("Save EAV values executed in %1ms"));
}

void EAVRepositoryMongo::SaveEvents(const std::list<model::dev_event>& events) {
    const operation_log log;
    insertAll(m_database.collection(event_field::collection), events);
    log.write(QStringLiteral("Save EAV events executed in %1ms"));
}

std::shared_ptr<by_device<model::dev_value>>
EAVRepositoryMongo::GetValues(const model::filter_eav& filter) {
    const operation_log log;
    auto values = std::make_shared<by_device<model::dev_value>>();
    if (!filter.modem_ids.empty()) {
        auto collection = m_database.collection(value_field::collection);
        const auto& find = filter.first_last ? findFirstAndLast : findPlain;
        find(collection, filter, *values);
    }
    log.write(QStringLiteral("Get EAV values executed in %1ms"));
    return values;
}

std::shared_ptr<by_device<model::dev_event>>
EAVRepositoryMongo::GetEvents(const model::filter_eav& filter) {
    const operation_log log;
    auto events = std::make_shared<by_device<model::dev_event>>();
    if (!filter.modem_ids.empty()) {
        const auto query = conditionsOf(filter, {{event_field::message, filter.tags}});
        collect(m_database.collection(event_field::collection)
                    .find(query, newestFirst(event_field::timestamp, filter.limit)),
                *events);
    }
    log.write(QStringLiteral("Get EAV events executed in %1ms"));
    return events;
}

void EAVRepositoryMongo::DeleteValues(const model::filter_eav& filter) {
    const operation_log log;
    if (!filter.modem_ids.empty()) {
        // Deliberate: the OBIS codes are not part of the filter; hosts delete whole readings.
        m_database.collection(value_field::collection)
            .delete_many(conditionsOf(filter, {{value_field::tag, filter.tags}}));
    }
    log.write(QStringLiteral("Delete EAV values executed in %1ms"));
}

void EAVRepositoryMongo::DeleteEvents(const model::filter_eav& filter) {
    const operation_log log;
    if (!filter.modem_ids.empty()) {
        // Deliberate: the tags are not part of the filter; hosts delete a period's events whole.
        m_database.collection(event_field::collection).delete_many(conditionsOf(filter, {}));
    }
    log.write(QStringLiteral("Delete EAV events executed in %1ms"));
}

} // namespace mongo
