#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QHash>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QVariant>

#include <memory>
#include <variant>

namespace interfaces {

class IDriverDLqueue;

/// The key/value state of each device: a working copy in memory, a shared one in Redis and a
/// durable one in MongoDB.
///
/// Values are read and written in the working copy only: Pull a device, work on its values, Push
/// it. Owned by the host through the factory's shared pointer. One thread at a time. Pull, Push,
/// Delete, GetIDs, DeleteDevices and GetAllStates block on the servers; the client libraries'
/// exceptions pass through unchanged.
class IDriverState {
public:
    /// First part of the keys that Pull, Push and Delete use. Empty until set.
    virtual void SetPrefix(const QString& prefix) = 0;
    /// What SetPrefix has set.
    virtual const QString& GetPrefix() = 0;

    /// Replaces the working copy by the one in Redis, else by the durable one, else by an empty
    /// object. Always true. Throws bsoncxx::v1::exception if the durable copy is needed and damaged
    /// or not UTF-8.
    virtual bool Pull(int modem_id) = 0;

    /// Stores the working copy in Redis and, if `persist`, durably. Always true. Throws
    /// bsoncxx::v1::exception if the durable copy has no BSON form (a key with a zero character in
    /// it, beyond 2 GiB); Redis has the state then.
    virtual bool Push(int modem_id, bool persist) = 0;

    /// Deletes both stored copies; the working copy stays until the next Pull. Always true.
    virtual bool Delete(int modem_id) = 0;

    /// The int 0 if the device has no such value. A number always comes back as a double, also
    /// one that was set as an int; text that reads as a number comes back as that number.
    virtual std::variant<int, double, QByteArray> GetValue(int modem_id, const QString& name) = 0;

    /// Puts one value into the working copy; bytes as text, which ends at their first zero.
    virtual void SetValue(int modem_id, const QString& name,
                          const std::variant<int, double, QByteArray>& value) = 0;

    /// Invalid if the device has no such value.
    virtual QVariant GetValueAsVariant(int modem_id, const QString& name) = 0;

    /// Stores the JSON object that `value` holds; any other variant stores an empty object.
    virtual void SetValueAsVariant(int modem_id, const QString& name, const QVariant& value) = 0;

    /// A copy of the working copy.
    virtual QJsonObject GetAll(int modem_id) = 0;

    /// Device numbers (each an int) of the keys SECOND:FIRST:ID in Redis, in no order and possibly
    /// repeated.
    virtual QList<QVariant> GetIDs(const QString& first, const QString& second) = 0;

    /// Calls Delete for each device; the period is not read. Always true.
    virtual bool DeleteDevices(const QList<int>& modem_ids, const QDateTime& from,
                               const QDateTime& to) = 0;

    /// The stored objects of the keys SECOND:FIRST:ID in Redis, by device number. Never null.
    virtual std::shared_ptr<QHash<int, QJsonObject>> GetAllStates(const QString& first,
                                                                  const QString& second) = 0;

    /// The downlink queues; owned by this object.
    virtual IDriverDLqueue* DLqueue() = 0;

protected:
    ~IDriverState() = default;
};

} // namespace interfaces
