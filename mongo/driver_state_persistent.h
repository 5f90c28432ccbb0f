#pragma once

#include "model/documents/device_object.h"
#include "mongo/persistent_store.h"

namespace mongo {

/// The durable copy of the devices' driver states, in the collection "states". Written when its
/// owner is asked to persist, read when Redis has nothing for a device.
class driver_state_persistent : public persistent_store<interfaces::IDriverStatePersistent> {
public:
    explicit driver_state_persistent(const std::string& mongoUrl)
        : persistent_store(mongoUrl, layout::states::collection) {}
};

} // namespace mongo
