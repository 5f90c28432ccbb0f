#pragma once

#include "interfaces/idl_app_message_repository.h"
#include "mongo/query.h"

#include <mongocxx/v1/database.hpp>

namespace mongo {

/// Stores downlink commands in the collection "dl_messages" and moves them through their status.
///
/// Borrows the client of the database handle: use it from one thread at a time, and not after the
/// database object that handed it out is gone. Every operation blocks: one request, but for queries
/// and deletions, which send one per device. All but DeleteMessages and AckCommand write one debug
/// line with their duration when they have succeeded. Errors of the MongoDB driver pass through
/// unchanged (mongocxx::v1::exception and derived), those of the conversions as
/// bsoncxx::v1::exception: a command without a BSON form, a stored document that is damaged or
/// holds invalid UTF-8.
class DLMessageRepository : public interfaces::IDLAPPMessageRepository {
public:
    explicit DLMessageRepository(const mongocxx::v1::database& database);

    /// Inserts one document and writes its ObjectId into `message.db_id`. Throws
    /// std::runtime_error if the id is no ObjectId; the document stays stored.
    void SaveMessage(model::dl_message& message) override;

    /// Throws a QString: "invalid id" (not an ObjectId) or "not exist". The log line tells of the
    /// search and is written before the document is converted.
    model::dl_message GetById(const QString& id) override;

    std::shared_ptr<by_device<model::dl_message>>
    GetCommands(const model::filter_dl& filter) override;

    std::shared_ptr<by_device<model::dl_message>>
    GetNotAckCommands(const model::filter_dl& filter) override;

    /// Throws bsoncxx::v1::exception if `id` is not an ObjectId.
    void SetStatus(const QString& id, model::dl_message::dl_status status) override;

    void AckCommand(const QString& id) override;

    void DeleteMessages(const std::list<int>& modem_ids, const QDateTime& from,
                        const QDateTime& to) override;

private:
    mongocxx::v1::database m_database;
};

} // namespace mongo
