#pragma once

#include "interfaces/imessages_database.h"
#include "mongo/dl_message_repository.h"
#include "mongo/ul_app_message_reopository.h"

#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/uri.hpp>

#include <QObject>

#include <string>

namespace mongo {

/// The message database: one MongoDB client and the repositories of uplink messages and downlink
/// commands on it.
///
/// Owns its client and both repositories; everything here is for one thread at a time. The host's
/// process-wide mongocxx::v1::instance must exist before and after it.
class DbDriverMongo final : public QObject, public interfaces::IMessagesDatabase {
public:
    /// `url` is a MongoDB connection string in UTF-8; a database named in it is not used. Throws
    /// mongocxx::v1::exception if it is malformed. Reaches no server.
    explicit DbDriverMongo(const std::string& url);

    /// Creates the indexes of "ul_messages" and "dl_messages" unless "ul_messages" exists. Throws
    /// mongocxx::v1::exception if the server cannot be reached or refuses an index; what was
    /// created before stays.
    void CreateDatabase() override;

    void CommitTransaction() override {}
    void RollbackTransaction() override {}
    void BeginTransaction() override {}

    interfaces::IULAPPMessageRepository* UlMessageRepository() override;
    interfaces::IDLAPPMessageRepository* DlMessageRepository() override;

private:
    mongocxx::v1::uri m_uri;
    mongocxx::v1::client m_client;
    ULAPPMessageRepository m_ulMessages;
    DLMessageRepository m_dlMessages;
};

} // namespace mongo
