#pragma once

#include "host/records/record_members.h"

#include <QByteArray>
#include <QJsonObject>
#include <QString>

/// Copies that share no storage with their originals, at the least that Qt takes for it: what any
/// reader of a store has to spend on a record, however cleverly it decodes.
///
/// Texts and byte arrays get a block of their own, JSON objects and lists the three of each
/// container (itself, its members, its texts), nested ones included. Date-times in UTC and in local
/// time need none: they stand in the record itself.
namespace bench {

QString deepCopy(const QString& text);
QByteArray deepCopy(const QByteArray& bytes);
QJsonObject deepCopy(const QJsonObject& object);

/// Of an uplink, a command, a reading, an event, and queues with all that is in them.
template <host::HasMembers Record>
Record deepCopy(const Record& record);

} // namespace bench
