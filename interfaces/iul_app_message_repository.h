#pragma once

#include "model/filter_roll.h"
#include "model/message.h"

#include <QString>

#include <list>
#include <map>
#include <memory>
#include <utility>

namespace interfaces {

/// Stores and finds uplink messages.
///
/// Owned by the database object that hands it out; never delete it. One thread at a time. Every
/// operation blocks on the server; the MongoDB driver's exceptions pass through unchanged.
class IULAPPMessageRepository {
public:
    virtual ~IULAPPMessageRepository() = default;

    /// Stores one message. The server refuses a second one with the same unique_id.
    ///
    /// Throws bsoncxx::v1::exception, and stores nothing, if the message has no BSON form: `data`
    /// or `extended_data` is JSON that the BSON library's reader rejects (a key with a zero
    /// character in it, {"$oid": "no ObjectId"}), or the document is beyond BSON's 2 GiB.
    virtual void SaveMessage(const model::message& message) = 0;

    /// Messages by device number, newest first within each device. Never null; a device without
    /// messages has no key.
    ///
    /// Throws bsoncxx::v1::exception if a stored document that the query finds lacks a member or
    /// has it with another type than SaveMessage writes, or is damaged. What was read before is
    /// lost then. Bytes of a text that are not UTF-8 are replaced.
    virtual std::shared_ptr<std::map<int, std::list<model::message>>>
    GetMessages(const model::filter_roll& filter) = 0;

    /// Deletes every message of the filter's devices, whatever the filter's period and tags.
    virtual void DeleteMessages(const model::filter_roll& filter) = 0;

    /// Protocol and hardware type of a device: always two empty texts, since this store keeps
    /// neither. The client registry answers the question (IDeviceClientsRepository).
    virtual std::pair<QString, QString> GetDeviceProtocolHWType(int modem_id) = 0;
};

} // namespace interfaces
