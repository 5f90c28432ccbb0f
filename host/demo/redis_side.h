#pragma once

#include "host/records/device_records.h"

#include <QString>

namespace host {

/// What happens to Redis past the plug-in: keys get lost, and somebody else fills the registry of
/// the devices' clients. Every operation blocks on the server.
class RedisSide {
public:
    virtual ~RedisSide() = default;

    /// Delete a key that the plug-in has written. True if it was there.
    virtual bool loseState(const QString& prefix, int device) = 0;
    virtual bool loseQueues(int device) = 0;

    /// Writes and deletes what the registry knows of a device.
    virtual void enter(const DeviceEntry& entry) = 0;
    virtual void strike(int device) = 0;
};

} // namespace host
