#include "mongo/persistent_store.h"

#include "model/bson_utils.h"
#include "model/documents/device_object.h"
#include "mongo/store_layout.h"

#include <mongocxx/v1/collection.hpp>
#include <mongocxx/v1/delete_one_result.hpp>
#include <mongocxx/v1/update_one_options.hpp>
#include <mongocxx/v1/update_one_result.hpp>

namespace mongo {

namespace field = layout::persistent;
using bson_utils::bson_builder;

namespace {

bsoncxx::v1::document::value queryById(int modem_id) {
    bson_builder query;
    query.appendInt32(field::id, modem_id);
    return query.take();
}

} // namespace

template <typename Interface>
persistent_store<Interface>::persistent_store(const std::string& mongoUrl,
                                              std::string_view collection)
    : m_uri(mongoUrl), m_client(m_uri), m_database(m_client.database(databaseName)),
      m_collection(collection) {}

template <typename Interface>
void persistent_store<Interface>::Create() {
    createStore(m_database, {{m_collection, field::indexes}});
}

// Deliberate: true only when a document was replaced; the first save of a device gives false.
template <typename Interface>
bool persistent_store<Interface>::Save(int modem_id, const QJsonObject& state) {
    bson_builder update;
    const bson_utils::device_object object{.modem_id = modem_id, .state = state};
    update.appendDocument("$set", toBson(object));
    mongocxx::v1::update_one_options options;
    options.upsert(true);
    const auto result = documents().update_one(queryById(modem_id), update.take(), options);
    return result && result->matched_count() == 1;
}

template <typename Interface>
QJsonObject persistent_store<Interface>::Get(int modem_id) {
    const auto document = documents().find_one(queryById(modem_id));
    if (!document) {
        return {};
    }
    bson_utils::query_memory memory;
    return bson_utils::readDocument<bson_utils::device_object>(*document, memory).state;
}

template <typename Interface>
bool persistent_store<Interface>::Delete(int modem_id) {
    const auto result = documents().delete_one(queryById(modem_id));
    return result && result->deleted_count() == 1;
}

template <typename Interface>
mongocxx::v1::collection persistent_store<Interface>::documents() {
    return m_database.collection(m_collection);
}

template class persistent_store<interfaces::IDriverStatePersistent>;
template class persistent_store<interfaces::IDriverDLqueuePersistent>;

} // namespace mongo
