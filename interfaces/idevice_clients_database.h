#pragma once

#include "interfaces/idatabase.h"

namespace interfaces {

class IDeviceClientsRepository;

/// The read-only registry of the devices' clients and properties.
///
/// Owns the repository: the pointer stays valid, and stays the same, while this object lives.
class IDeviceClientsDatabase : public IDatabase {
public:
    /// Never null.
    virtual IDeviceClientsRepository* DeviceClientsRepository() = 0;
};

} // namespace interfaces
