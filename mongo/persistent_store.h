#pragma once

#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/database.hpp>
#include <mongocxx/v1/uri.hpp>

#include <QJsonObject>

#include <string>
#include <string_view>

namespace mongo {

/// One JSON object per device in one collection: what driver_state_persistent and
/// dl_queue_persistent have in common.
///
/// Owns its client; one thread at a time. Every operation is one blocking request, Create one or
/// two. Errors of the MongoDB driver pass through unchanged (mongocxx::v1::exception and derived).
class persistent_store {
public:
    /// `collection` must outlive the store. Throws mongocxx::v1::exception if `url` is malformed.
    /// Reaches no server.
    persistent_store(const std::string& url, std::string_view collection);

    /// Creates the hashed index, and with it the collection, unless the collection exists.
    void create();

    /// Stores or replaces. Deliberate: true only when it replaced a document; the first save of a
    /// device gives false although it succeeds.
    bool save(int modem_id, const QJsonObject& state);

    /// Empty if there is no document or its state is not an object.
    QJsonObject get(int modem_id);

    /// True when there was a document to delete.
    bool remove(int modem_id);

private:
    mongocxx::v1::collection documents();

    mongocxx::v1::uri m_uri;
    mongocxx::v1::client m_client;
    mongocxx::v1::database m_database;
    std::string_view m_collection;
};

} // namespace mongo
