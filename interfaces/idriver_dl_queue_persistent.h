#pragma once

#include <QJsonObject>

namespace interfaces {

/// The durable copy of the devices' downlink queues: one JSON object per device.
///
/// Every operation blocks on the server; the MongoDB driver's exceptions pass through unchanged.
class IDriverDLqueuePersistent {
public:
    /// Lays out the collection where the store has none.
    virtual void Create() = 0;

    /// Stores or replaces the object. True when it replaced one, false on the first save of a
    /// device.
    ///
    /// Throws bsoncxx::v1::exception, and stores nothing, if the object has no BSON form: a key
    /// with a zero character in it, a document beyond BSON's 2 GiB.
    virtual bool Save(int modem_id, const QJsonObject& state) = 0;

    /// The stored object, or an empty one. Throws bsoncxx::v1::exception if the stored document is
    /// damaged or holds text that is not UTF-8.
    virtual QJsonObject Get(int modem_id) = 0;

    /// True when there was something to delete.
    virtual bool Delete(int modem_id) = 0;

protected:
    ~IDriverDLqueuePersistent() = default;
};

} // namespace interfaces
