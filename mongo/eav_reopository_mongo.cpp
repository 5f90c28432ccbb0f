#include "mongo/eav_reopository_mongo.h"

#include "model/bson_utils.h"
#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "mongo/operation_log.h"
#include "mongo/query.h"

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
    // Converted one by one as the driver takes them up, so no second copy of a long list is kept.
    const auto documents = records | std::views::transform([](const Record& record) {
                               return bson_utils::toBson(record);
                           });
    collection.insert_many(documents.begin(), documents.end());
}

} // namespace

EAVRepositoryMongo::EAVRepositoryMongo(const mongocxx::v1::database& database)
    : m_database(database) {}

void EAVRepositoryMongo::SaveValues(const std::list<model::dev_value>& values) {
    const operation_log log;
    if (!values.empty()) {
        insertAll(m_database.collection(value_field::collection), values);
    }
    log.write(QStringLiteral("Save EAV values executed in %1ms"));
}

void EAVRepositoryMongo::SaveEvents(const std::list<model::dev_event>& events) {
    const operation_log log;
    if (!events.empty()) {
        insertAll(m_database.collection(event_field::collection), events);
    }
    log.write(QStringLiteral("Save EAV events executed in %1ms"));
}

std::shared_ptr<std::map<int, std::list<model::dev_value>>>
EAVRepositoryMongo::GetValues(const model::filter_eav& filter) {
    const operation_log log;
    auto values = std::make_shared<values_by_device>();
    if (!filter.modem_ids.empty()) {
        if (filter.first_last) {
            findFirstAndLast(filter, *values);
        } else {
            findPlain(filter, *values);
        }
    }
    log.write(QStringLiteral("Get EAV values executed in %1ms"));
    return values;
}

void EAVRepositoryMongo::findFirstAndLast(const model::filter_eav& filter,
                                          values_by_device& found) {
    auto collection = m_database.collection(value_field::collection);
    bson_utils::local_times times;
    for (const int modem_id : filter.modem_ids) {
        for (const QString& obis_code : filter.obis_codes) {
            bson_builder builder;
            appendPeriod(builder, value_field::timestamp, filter.begin, filter.end);
            builder.appendInt32(value_field::modem_id, modem_id);
            builder.appendString(value_field::obis_code, obis_code);
            if (!filter.tags.empty()) {
                appendIn(builder, value_field::tag, filter.tags);
            }
            builder.appendDocument(value_field::value, [](bson_builder& condition) {
                condition.appendUtf8("$type", "number");
            });
            const auto query = builder.take();
            // Newest first, then oldest; a single reading is deliberately given twice.
            for (const auto& options :
                 {newestFirst(value_field::timestamp, 1), oldestFirst(value_field::timestamp, 1)}) {
                auto cursor = collection.find(query, options);
                for (const auto& document : cursor) {
                    found[modem_id].push_back(
                        bson_utils::readDocument<model::dev_value>(document, times));
                }
            }
        }
    }
}

void EAVRepositoryMongo::findPlain(const model::filter_eav& filter, values_by_device& found) {
    bson_builder query;
    appendPeriod(query, value_field::timestamp, filter.begin, filter.end);
    appendIn(query, value_field::modem_id, filter.modem_ids);
    if (!filter.obis_codes.empty()) {
        appendIn(query, value_field::obis_code, filter.obis_codes);
    }
    if (!filter.tags.empty()) {
        appendIn(query, value_field::tag, filter.tags);
    }
    auto cursor = m_database.collection(value_field::collection)
                      .find(query.take(), newestFirst(value_field::timestamp, filter.limit));
    bson_utils::local_times times;
    for (const auto& document : cursor) {
        model::dev_value value = bson_utils::readDocument<model::dev_value>(document, times);
        found[value.modem_id].push_back(std::move(value));
    }
}

std::shared_ptr<std::map<int, std::list<model::dev_event>>>
EAVRepositoryMongo::GetEvents(const model::filter_eav& filter) {
    const operation_log log;
    auto events = std::make_shared<std::map<int, std::list<model::dev_event>>>();
    if (!filter.modem_ids.empty()) {
        bson_builder query;
        appendPeriod(query, event_field::timestamp, filter.begin, filter.end);
        appendIn(query, event_field::modem_id, filter.modem_ids);
        if (!filter.tags.empty()) {
            appendIn(query, event_field::message, filter.tags);
        }
        auto cursor = m_database.collection(event_field::collection)
                          .find(query.take(), newestFirst(event_field::timestamp, filter.limit));
        bson_utils::local_times times;
        for (const auto& document : cursor) {
            model::dev_event event = bson_utils::readDocument<model::dev_event>(document, times);
            (*events)[event.modem_id].push_back(std::move(event));
        }
    }
    log.write(QStringLiteral("Get EAV events executed in %1ms"));
    return events;
}

void EAVRepositoryMongo::DeleteValues(const model::filter_eav& filter) {
    const operation_log log;
    if (!filter.modem_ids.empty()) {
        // Deliberate: the OBIS codes are not part of the filter; hosts delete whole readings.
        bson_builder query;
        appendPeriod(query, value_field::timestamp, filter.begin, filter.end);
        appendIn(query, value_field::modem_id, filter.modem_ids);
        if (!filter.tags.empty()) {
            appendIn(query, value_field::tag, filter.tags);
        }
        m_database.collection(value_field::collection).delete_many(query.take());
    }
    log.write(QStringLiteral("Delete EAV values executed in %1ms"));
}

void EAVRepositoryMongo::DeleteEvents(const model::filter_eav& filter) {
    const operation_log log;
    if (!filter.modem_ids.empty()) {
        // Deliberate: the tags are not part of the filter; hosts delete a period's events whole.
        bson_builder query;
        appendPeriod(query, event_field::timestamp, filter.begin, filter.end);
        appendIn(query, event_field::modem_id, filter.modem_ids);
        m_database.collection(event_field::collection).delete_many(query.take());
    }
    log.write(QStringLiteral("Delete EAV events executed in %1ms"));
}

} // namespace mongo
