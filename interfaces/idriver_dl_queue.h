#pragma once

#include "model/dl_queues.h"

#include <QList>

namespace interfaces {

/// The pending downlink queues of each device, kept in Redis with an optional durable copy.
///
/// Owned by the driver state that hands it out; never delete it. One thread at a time. Every
/// operation blocks on the servers; the client libraries' exceptions pass through unchanged.
class IDriverDLqueue {
public:
    /// The queues from Redis, else from the durable copy, else an empty record. Throws
    /// bsoncxx::v1::exception if the durable copy is needed and damaged or not UTF-8.
    virtual model::dl_queues Pull(int modem_id) = 0;

    /// Stores the queues in Redis and, if `persist`, in the durable copy. Always true. Throws
    /// bsoncxx::v1::exception if the durable copy has no BSON form (a key with a zero character in
    /// it, beyond 2 GiB); Redis has the queues then.
    virtual bool Push(int modem_id, const model::dl_queues& queues, bool persist) = 0;

    /// Deletes both copies. Always true.
    virtual bool Delete(int modem_id) = 0;

    /// Calls Delete for each device. Always true.
    virtual bool DeleteDevices(const QList<int>& modem_ids) = 0;

protected:
    ~IDriverDLqueue() = default;
};

} // namespace interfaces
