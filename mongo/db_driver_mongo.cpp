#include "mongo/db_driver_mongo.h"

#include "model/documents/dl_message.h"
#include "model/documents/ul_message.h"
#include "mongo/store_layout.h"

#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/database.hpp>

namespace mongo {

DbDriverMongo::DbDriverMongo(const std::string& url)
    : m_uri(url), m_client(m_uri), m_ulMessages(m_client.database(databaseName)),
      m_dlMessages(m_client.database(databaseName)) {}

void DbDriverMongo::CreateDatabase() {
    auto database = m_client.database(databaseName);
    // Deliberate: "ul_messages" alone stands for a prepared store, "dl_messages" is not looked at.
    if (database.has_collection(layout::ul_messages::collection)) {
        return;
    }
    auto uplinks = database.collection(layout::ul_messages::collection);
    createIndexes(uplinks, layout::ul_messages::indexes);
    auto downlinks = database.collection(layout::dl_messages::collection);
    createIndexes(downlinks, layout::dl_messages::indexes);
}

interfaces::IULAPPMessageRepository* DbDriverMongo::UlMessageRepository() {
    return &m_ulMessages;
}

interfaces::IDLAPPMessageRepository* DbDriverMongo::DlMessageRepository() {
    return &m_dlMessages;
}

} // namespace mongo
