#include "mongo/eav_db_driver_mongo.h"

#include "model/documents/dev_event.h"
#include "model/documents/dev_value.h"
#include "mongo/store_layout.h"

#include <mongocxx/v1/database.hpp>

namespace mongo {

EavDbDriverMongo::EavDbDriverMongo(const std::string& url)
    : m_uri(url), m_client(m_uri), m_repository(m_client.database(databaseName)) {}

void EavDbDriverMongo::CreateDatabase() {
    createStore(m_client.database(databaseName),
                {{layout::eav_values::collection, layout::eav_values::indexes},
                 {layout::eav_events::collection, layout::eav_events::indexes}});
}

interfaces::IEAVRepository* EavDbDriverMongo::EAVRepository() {
    return &m_repository;
}

} // namespace mongo
