#include "mongo/dl_message_repository.h"

#include "model/bson_utils.h"
#include "model/documents/dl_message.h"
#include "mongo/operation_log.h"

#include <bsoncxx/v1/exception.hpp>
#include <bsoncxx/v1/oid.hpp>
#include <bsoncxx/v1/types/view.hpp>
#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/cursor.hpp>
#include <mongocxx/v1/delete_many_result.hpp>
#include <mongocxx/v1/insert_one_result.hpp>
#include <mongocxx/v1/update_one_result.hpp>

#include <stdexcept>

namespace mongo {

namespace field = layout::dl_messages;
using bson_utils::bson_builder;
using dl_status = model::dl_message::dl_status;

namespace {

bsoncxx::v1::document::value queryById(const bsoncxx::v1::oid& id) {
    bson_builder query;
    query.appendOid(field::id, id);
    return query.take();
}

bsoncxx::v1::oid oidOf(const QString& id) {
    return bsoncxx::v1::oid{id.toStdString()};
}

enum class wanted { all, notAcknowledged };

void appendStatus(bson_builder& alternatives, std::string_view index, dl_status status) {
    alternatives.appendDocument(index, [&](bson_builder& alternative) {
        alternative.appendInt32(field::status, static_cast<std::int32_t>(status));
    });
}

bsoncxx::v1::document::value conditionsOf(int modem_id, const QDateTime& begin,
                                          const QDateTime& end, wanted which = wanted::all) {
    bson_builder query;
    query.appendInt32(field::modem_id, modem_id);
    appendPeriod(query, field::timestamp, begin, end);
    if (which == wanted::notAcknowledged) {
        query.appendArray("$or", [](bson_builder& alternatives) {
            appendStatus(alternatives, "0", dl_status::WAIT_DATA);
            appendStatus(alternatives, "1", dl_status::PENDING);
        });
    }
    return query.take();
}

std::shared_ptr<by_device<model::dl_message>>
findByDevice(mongocxx::v1::collection collection, const model::filter_dl& filter, wanted which) {
    auto commands = std::make_shared<by_device<model::dl_message>>();
    const auto order = newestFirst(field::timestamp, filter.limit);
    bson_utils::query_memory memory;
    for (const int modem_id : filter.modem_ids) {
        auto cursor =
            collection.find(conditionsOf(modem_id, filter.begin, filter.end, which), order);
        std::list<model::dl_message> found;
        for (const auto& document : cursor) {
            found.push_back(bson_utils::readDocument<model::dl_message>(document, memory));
        }
        if (!found.empty()) {
            auto& all = (*commands)[modem_id];
            all.splice(all.end(), found);
        }
    }
    return commands;
}

} // namespace

DLMessageRepository::DLMessageRepository(const mongocxx::v1::database& database)
    : m_database(database) {}

void DLMessageRepository::SaveMessage(model::dl_message& message) {
    const operation_log log;
    const auto result =
        m_database.collection(field::collection).insert_one(bson_utils::toBson(message));
    if (!result || result->inserted_id().type_id() != bsoncxx::v1::types::id::k_oid) {
        throw std::runtime_error("error in id");
    }
    message.db_id = QString::fromStdString(result->inserted_id().get_oid().value.to_string());
    log.write(QStringLiteral("Save DL messages executed in %1ms"));
}

model::dl_message DLMessageRepository::GetById(const QString& id) {
    const operation_log log;
    const auto oid = [&] {
        try {
            return oidOf(id);
        } catch (const bsoncxx::v1::exception&) {
            throw QStringLiteral("invalid id");
        }
    }();
    const auto document = m_database.collection(field::collection).find_one(queryById(oid));
    if (!document) {
        throw QStringLiteral("not exist");
    }
    log.write(QStringLiteral("Get DL messages by ID executed in %1ms"));
    bson_utils::query_memory memory;
    return bson_utils::readDocument<model::dl_message>(*document, memory);
}

std::shared_ptr<by_device<model::dl_message>>
DLMessageRepository::GetCommands(const model::filter_dl& filter) {
    const operation_log log;
    auto commands = findByDevice(m_database.collection(field::collection), filter, wanted::all);
    log.write(QStringLiteral("Get DL messages executed in %1ms"));
    return commands;
}

std::shared_ptr<by_device<model::dl_message>>
DLMessageRepository::GetNotAckCommands(const model::filter_dl& filter) {
    const operation_log log;
    auto commands =
        findByDevice(m_database.collection(field::collection), filter, wanted::notAcknowledged);
    log.write(QStringLiteral("Get DL messages NOT ACK executed in %1ms"));
    return commands;
}

void DLMessageRepository::SetStatus(const QString& id, dl_status status) {
    const operation_log log;
    bson_builder update;
    update.appendDocument("$set", [&](bson_builder& set) {
        set.appendInt32(field::status, static_cast<std::int32_t>(status));
    });
    m_database.collection(field::collection).update_one(queryById(oidOf(id)), update.take());
    log.write(QStringLiteral("Set DL messages status executed in %1ms"));
}

void DLMessageRepository::AckCommand(const QString& id) {
    SetStatus(id, dl_status::EXECUTED);
}

void DLMessageRepository::DeleteMessages(const std::list<int>& modem_ids, const QDateTime& from,
                                         const QDateTime& to) {
    for (const int modem_id : modem_ids) {
        m_database.collection(field::collection).delete_many(conditionsOf(modem_id, from, to));
    }
}

} // namespace mongo
