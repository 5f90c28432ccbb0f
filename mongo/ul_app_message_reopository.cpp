#include "mongo/ul_app_message_reopository.h"

#include "model/bson_utils.h"
#include "model/documents/ul_message.h"
#include "mongo/operation_log.h"

#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/cursor.hpp>
#include <mongocxx/v1/delete_many_result.hpp>
#include <mongocxx/v1/insert_one_result.hpp>

namespace mongo {

namespace field = layout::ul_messages;

namespace {

/// The field that the filter's period is about.
std::string_view timeOf(const model::filter_roll& filter) {
    return filter.by_time_detected ? field::time_detected : field::timestamp;
}

bsoncxx::v1::document::value conditionsOf(const model::filter_roll& filter) {
    bson_utils::bson_builder query;
    appendPeriod(query, timeOf(filter), filter.begin, filter.end);
    appendIn(query, field::modem_id, filter.modem_ids);
    // Deliberate: a query by detection time does not select by tag.
    if (!filter.by_time_detected) {
        appendIn(query, field::tag, filter.tags);
    }
    return query.take();
}

} // namespace

ULAPPMessageRepository::ULAPPMessageRepository(const mongocxx::v1::database& database)
    : m_database(database) {}

void ULAPPMessageRepository::SaveMessage(const model::message& message) {
    const operation_log log;
    m_database.collection(field::collection).insert_one(bson_utils::toBson(message));
    log.write(QStringLiteral("Save UL message executed in %1ms"));
}

std::shared_ptr<by_device<model::message>>
ULAPPMessageRepository::GetMessages(const model::filter_roll& filter) {
    const operation_log log;
    auto messages = std::make_shared<by_device<model::message>>();
    collect(m_database.collection(field::collection)
                .find(conditionsOf(filter), newestFirst(timeOf(filter), filter.limit)),
            *messages);
    log.write(QStringLiteral("Get UL messages executed in %1ms"));
    return messages;
}

void ULAPPMessageRepository::DeleteMessages(const model::filter_roll& filter) {
    const operation_log log;
    if (!filter.modem_ids.empty()) {
        // Deliberate: the period is not part of the filter; hosts delete whole devices with it.
        bson_utils::bson_builder query;
        appendIn(query, field::modem_id, filter.modem_ids);
        m_database.collection(field::collection).delete_many(query.take());
    }
    log.write(QStringLiteral("Delete UL message executed in %1ms"));
}

std::pair<QString, QString> ULAPPMessageRepository::GetDeviceProtocolHWType(int /*modem_id*/) {
    return {};
}

} // namespace mongo
