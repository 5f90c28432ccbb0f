#pragma once

#include "model/documents/device_object.h"
#include "mongo/persistent_store.h"

namespace mongo {

/// The durable copy of the devices' downlink queues, in the collection "dl_queues". Written when
/// its owner is asked to persist, read when Redis has nothing for a device.
///
/// Deliberate: the interface is a private base, only dl_queue uses the object.
class dl_queue_persistent : private persistent_store<interfaces::IDriverDLqueuePersistent> {
public:
    explicit dl_queue_persistent(const std::string& mongoUrl)
        : persistent_store(mongoUrl, layout::dl_queues::collection) {}

    using persistent_store::Create;
    using persistent_store::Delete;
    using persistent_store::Get;
    using persistent_store::Save;
};

} // namespace mongo
