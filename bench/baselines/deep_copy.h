#pragma once

#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/dl_queues.h"
#include "model/message.h"

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

model::message deepCopy(const model::message& message);
model::dl_message deepCopy(const model::dl_message& message);
model::dev_value deepCopy(const model::dev_value& value);
model::dev_event deepCopy(const model::dev_event& event);
model::dl_queues deepCopy(const model::dl_queues& queues);

} // namespace bench
