#include "mongo/db_driver_mongo.h"

#include "model/documents/dl_message.h"
#include "model/documents/ul_message.h"
#include "mongo/store_layout.h"

#include <mongocxx/v1/database.hpp>

namespace mongo {

DbDriverMongo::DbDriverMongo(const std::string& url)
    : m_uri(url), m_client(m_uri), m_ulMessages(m_client.database(databaseName)),
      m_dlMessages(m_client.database(databaseName)) {}

void DbDriverMongo::CreateDatabase() {
    createStore(m_client.database(databaseName),
                {{layout::ul_messages::collection, layout::ul_messages::indexes},
                 {layout::dl_messages::collection, layout::dl_messages::indexes}});
}

interfaces::IULAPPMessageRepository* DbDriverMongo::UlMessageRepository() {
    return &m_ulMessages;
}

interfaces::IDLAPPMessageRepository* DbDriverMongo::DlMessageRepository() {
    return &m_dlMessages;
}

} // namespace mongo
