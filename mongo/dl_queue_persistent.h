#pragma once

#include "interfaces/idriver_dl_queue_persistent.h"
#include "mongo/persistent_store.h"

#include <string>

namespace mongo {

/// The durable copy of the devices' downlink queues, in the collection "dl_queues".
///
/// Written when its owner is asked to persist, read when Redis has nothing for a device. Owns its
/// MongoDB client; one thread at a time. Every operation blocks; errors of the MongoDB driver pass
/// through unchanged (mongocxx::v1::exception and derived).
/// Deliberate: the interface is a private base, only dl_queue uses the object.
class dl_queue_persistent : private interfaces::IDriverDLqueuePersistent {
public:
    /// Throws mongocxx::v1::exception if `mongoUrl` is malformed. Reaches no server.
    explicit dl_queue_persistent(const std::string& mongoUrl);

    void Create() override;
    bool Save(int modem_id, const QJsonObject& state) override;
    QJsonObject Get(int modem_id) override;
    bool Delete(int modem_id) override;

private:
    persistent_store m_store;
};

} // namespace mongo
