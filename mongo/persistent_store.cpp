#include "mongo/persistent_store.h"

#include "model/bson_utils.h"
#include "model/documents/device_object.h"
#include "mongo/store_layout.h"

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

persistent_store::persistent_store(const std::string& url, std::string_view collection)
    : m_uri(url), m_client(m_uri), m_database(m_client.database(databaseName)),
      m_collection(collection) {}

void persistent_store::create() {
    if (m_database.has_collection(m_collection)) {
        return;
    }
    auto collection = documents();
    createIndexes(collection, field::indexes);
}

bool persistent_store::save(int modem_id, const QJsonObject& state) {
    bson_builder update;
    const bson_utils::device_object object{.modem_id = modem_id, .state = state};
    update.appendDocument("$set", toBson(object));
    mongocxx::v1::update_one_options options;
    options.upsert(true);
    const auto result = documents().update_one(queryById(modem_id), update.take(), options);
    return result && result->matched_count() == 1;
}

QJsonObject persistent_store::get(int modem_id) {
    const auto document = documents().find_one(queryById(modem_id));
    if (!document) {
        return {};
    }
    bson_utils::local_times times;
    return bson_utils::readDocument<bson_utils::device_object>(*document, times).state;
}

bool persistent_store::remove(int modem_id) {
    const auto result = documents().delete_one(queryById(modem_id));
    return result && result->deleted_count() == 1;
}

mongocxx::v1::collection persistent_store::documents() {
    return m_database.collection(m_collection);
}

} // namespace mongo
