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
    virtual void SaveMessage(const model::message& message) = 0;

    /// Messages by device number, newest first within each device. Never null; a device without
    /// messages has no key.
    virtual std::shared_ptr<std::map<int, std::list<model::message>>>
    GetMessages(const model::filter_roll& filter) = 0;

    /// Deletes every message of the filter's devices, whatever the filter's period and tags.
    virtual void DeleteMessages(const model::filter_roll& filter) = 0;

    /// Protocol and hardware type of a device: always two empty texts, since this store keeps
    /// neither. The client registry answers the question (IDeviceClientsRepository).
    virtual std::pair<QString, QString> GetDeviceProtocolHWType(int modem_id) = 0;
};

} // namespace interfaces
