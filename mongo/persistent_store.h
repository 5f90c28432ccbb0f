#pragma once

#include "interfaces/idriver_dl_queue_persistent.h"
#include "interfaces/idriver_state_persistent.h"

#include <mongocxx/v1/client.hpp>
#include <mongocxx/v1/collection-fwd.hpp>
#include <mongocxx/v1/database.hpp>
#include <mongocxx/v1/uri.hpp>

#include <string>
#include <string_view>

namespace mongo {

/// One JSON object per device in one collection: what driver_state_persistent and
/// dl_queue_persistent are but for the collection's name. What the operations do is said in the
/// interfaces, which are alike.
///
/// Owns its MongoDB client; one thread at a time. Every operation is one blocking request, Create
/// one or two. Errors of the MongoDB driver pass through unchanged (mongocxx::v1::exception and
/// derived), and so do those of the conversions (bsoncxx::v1::exception).
template <typename Interface>
class persistent_store : public Interface {
public:
    void Create() override;
    bool Save(int modem_id, const QJsonObject& state) override;
    QJsonObject Get(int modem_id) override;
    bool Delete(int modem_id) override;

protected:
    /// `collection` must outlive the store. Throws mongocxx::v1::exception if `mongoUrl` is
    /// malformed. Reaches no server.
    persistent_store(const std::string& mongoUrl, std::string_view collection);
    ~persistent_store() = default;

private:
    mongocxx::v1::collection documents();

    mongocxx::v1::uri m_uri;
    mongocxx::v1::client m_client;
    mongocxx::v1::database m_database;
    std::string_view m_collection;
};

extern template class persistent_store<interfaces::IDriverStatePersistent>;
extern template class persistent_store<interfaces::IDriverDLqueuePersistent>;

} // namespace mongo
