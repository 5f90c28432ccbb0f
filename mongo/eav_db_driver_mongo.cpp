#include "mongo/eav_db_driver_mongo.h"

#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "mongo/store_layout.h"

#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/database.hpp>

namespace mongo {

EavDbDriverMongo::EavDbDriverMongo(const std::string& url)
    : m_uri(url), m_client(m_uri), m_repository(m_client.database(databaseName)) {}

void EavDbDriverMongo::CreateDatabase() {
    auto database = m_client.database(databaseName);
    // Deliberate: "eav_values" alone stands for a prepared store, "eav_events" is not looked at.
    if (database.has_collection(layout::eav_values::collection)) {
        return;
    }
    auto values = database.collection(layout::eav_values::collection);
    createIndexes(values, layout::eav_values::indexes);
    auto events = database.collection(layout::eav_events::collection);
    createIndexes(events, layout::eav_events::indexes);
}

interfaces::IEAVRepository* EavDbDriverMongo::EAVRepository() {
    return &m_repository;
}

} // namespace mongo
