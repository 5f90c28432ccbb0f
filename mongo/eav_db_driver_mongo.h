#pragma once

#include "interfaces/ieav_database.h"
#include "mongo/eav_reopository_mongo.h"

#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/uri.hpp>

#include <QObject>

#include <string>

namespace mongo {

/// The EAV database: one MongoDB client and the repository of values and events on it.
///
/// Owns its client and the repository; everything here is for one thread at a time. The host's
/// process-wide mongocxx::v1::instance must exist before and after it.
class EavDbDriverMongo final : public QObject, public interfaces::IEAVDatabase {
public:
    /// `url` is a MongoDB connection string in UTF-8; a database named in it is not used. Throws
    /// mongocxx::v1::exception if it is malformed. Reaches no server.
    explicit EavDbDriverMongo(const std::string& url);

    /// Creates the indexes of "eav_values" and "eav_events" unless "eav_values" exists. Throws
    /// mongocxx::v1::exception if the server cannot be reached or refuses an index; what was
    /// created before stays, and a later call does not complete it.
    void CreateDatabase() override;

    void CommitTransaction() override {}
    void RollbackTransaction() override {}
    void BeginTransaction() override {}

    interfaces::IEAVRepository* EAVRepository() override;

private:
    mongocxx::v1::uri m_uri;
    mongocxx::v1::client m_client;
    EAVRepositoryMongo m_repository;
};

} // namespace mongo
