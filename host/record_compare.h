#pragma once

#include "model/message.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace host {

/// The functions below exist once for every kind of record. They compare by the rules of the store:
/// timestamps in whole seconds, ttl in milliseconds, every other member as it is (numbers bit for
/// bit, JSON member by member), and the members that are never stored must be empty or 0.

/// One entry for each member that differs: its name, what was written and what came back.
QStringList differences(const model::message& written, const model::message& readBack);

/// What tells one record from all others of its kind.
QString recordKey(const model::message& message);

/// The record in a few words, for reports.
QString describe(const model::message& message);

} // namespace host
