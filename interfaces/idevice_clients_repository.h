#pragma once

#include <QString>

#include <list>
#include <utility>

namespace interfaces {

/// Reads which clients a device belongs to and what kind of device it is.
///
/// Owned by the database object that hands it out; never delete it. One thread at a time. Every
/// operation blocks on the server; the Redis client's exceptions pass through unchanged.
class IDeviceClientsRepository {
public:
    virtual ~IDeviceClientsRepository() = default;

    /// Names of the device's clients, in no order; empty for an unknown device.
    virtual std::list<QString> GetDeviceClients(int modem_id) = 0;

    /// Protocol and hardware type of the device, in this order; empty where unknown.
    virtual std::pair<QString, QString> GetDeviceInfo(int modem_id) = 0;
};

} // namespace interfaces
