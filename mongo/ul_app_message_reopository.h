#pragma once

#include "interfaces/iul_app_message_repository.h"
#include "mongo/query.h"

#include <mongocxx/v1/database.hpp>

namespace mongo {

/// Stores and finds uplink messages in the collection "ul_messages".
///
/// Borrows the client of the database handle: use it from one thread at a time, and not after the
/// database object that handed it out is gone. Every operation is one blocking request (a query:
/// one request and its cursor's batches) and writes one debug line with its duration when it has
/// succeeded. Errors of the MongoDB driver pass through unchanged (mongocxx::v1::exception and
/// derived), those of the conversions as bsoncxx::v1::exception.
class ULAPPMessageRepository final : public interfaces::IULAPPMessageRepository {
public:
    explicit ULAPPMessageRepository(const mongocxx::v1::database& database);

    /// Inserts one document. The server refuses a second message with the same unique_id. Throws
    /// bsoncxx::v1::exception, without a request, if the message has no BSON form.
    void SaveMessage(const model::message& message) override;

    /// Finds by device and period; by tag too unless the period is that of detection. A document
    /// that lacks a member, has it with another type or is damaged ends the query with
    /// bsoncxx::v1::exception.
    std::shared_ptr<by_device<model::message>>
    GetMessages(const model::filter_roll& filter) override;

    /// Deletes by device only. Asks the server nothing if the filter names no device.
    void DeleteMessages(const model::filter_roll& filter) override;

    std::pair<QString, QString> GetDeviceProtocolHWType(int modem_id) override;

private:
    mongocxx::v1::database m_database;
};

} // namespace mongo
