#pragma once

#include "model/dl_message.h"
#include "model/filter_dl.h"

#include <QDateTime>
#include <QString>

#include <list>
#include <map>
#include <memory>

namespace interfaces {

/// Stores downlink commands and moves them through their status.
///
/// Owned by the database object that hands it out; never delete it. One thread at a time. Every
/// operation blocks on the server; the MongoDB driver's exceptions pass through unchanged.
class IDLAPPMessageRepository {
public:
    virtual ~IDLAPPMessageRepository() = default;

    /// Stores one command and writes the id of its document into `message.db_id`.
    ///
    /// Throws std::runtime_error if the server's id is not an ObjectId; the command is stored all
    /// the same. Throws bsoncxx::v1::exception, and stores nothing, if the command has no BSON
    /// form: a key of `data` with a zero character in it, a document beyond BSON's 2 GiB.
    virtual void SaveMessage(model::dl_message& message) = 0;

    /// Throws a QString: "invalid id" if `id` is not 24 hexadecimal digits, "not exist" if there is
    /// no such command. Throws bsoncxx::v1::exception if the stored document is damaged or holds
    /// text that is not UTF-8.
    virtual model::dl_message GetById(const QString& id) = 0;

    /// Commands by device number, newest first. Never null; a device without commands has no key.
    /// A device that the filter names twice has its commands twice.
    ///
    /// Throws bsoncxx::v1::exception if a stored document that the query finds is damaged or holds
    /// text that is not UTF-8. What was read before is lost then.
    virtual std::shared_ptr<std::map<int, std::list<model::dl_message>>>
    GetCommands(const model::filter_dl& filter) = 0;

    /// As GetCommands, for commands that are pending or wait for data. Throws as it does.
    virtual std::shared_ptr<std::map<int, std::list<model::dl_message>>>
    GetNotAckCommands(const model::filter_dl& filter) = 0;

    /// Does nothing if there is no such command. Throws bsoncxx::v1::exception if `id` is not 24
    /// hexadecimal digits.
    virtual void SetStatus(const QString& id, model::dl_message::dl_status status) = 0;

    /// Sets the status to EXECUTED, through SetStatus, and throws as it does.
    virtual void AckCommand(const QString& id) = 0;

    /// Deletes the devices' commands of a period, both ends inclusive.
    virtual void DeleteMessages(const std::list<int>& modem_ids, const QDateTime& from,
                                const QDateTime& to) = 0;
};

} // namespace interfaces
