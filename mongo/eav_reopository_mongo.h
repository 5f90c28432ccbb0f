#pragma once

#include "interfaces/ieav_repository.h"
#include "mongo/query.h"

#include <mongocxx/v1/database.hpp>

namespace mongo {

/// Stores and finds the devices' values in "eav_values" and their events in "eav_events".
///
/// Borrows the client of the database handle: use it from one thread at a time, and not after the
/// database object that handed it out is gone. Every operation blocks: one request (a query: one
/// request and its cursor's batches), but for the first-last query, which sends two finds per
/// device and OBIS code. Every operation writes one debug line with its duration when it has
/// succeeded, also when an empty list left nothing to ask the server. Errors of the MongoDB driver
/// pass through unchanged (mongocxx::v1::exception and derived), those of the conversions as
/// bsoncxx::v1::exception: a record without a BSON form, of which no request tells the server, and
/// a stored document that is damaged or holds invalid UTF-8.
class EAVRepositoryMongo final : public interfaces::IEAVRepository {
public:
    explicit EAVRepositoryMongo(const mongocxx::v1::database& database);

    void SaveValues(const std::list<model::dev_value>& values) override;
    void SaveEvents(const std::list<model::dev_event>& events) override;

    std::shared_ptr<by_device<model::dev_value>>
    GetValues(const model::filter_eav& filter) override;

    std::shared_ptr<by_device<model::dev_event>>
    GetEvents(const model::filter_eav& filter) override;

    void DeleteValues(const model::filter_eav& filter) override;
    void DeleteEvents(const model::filter_eav& filter) override;

private:
    mongocxx::v1::database m_database;
};

} // namespace mongo
