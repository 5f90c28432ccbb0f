#pragma once

#include "model/custom_cmd.h"
#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/dl_queues.h"
#include "model/hb_message.h"
#include "model/in_message.h"
#include "model/message.h"

#include <QJsonObject>

/// The records as JSON objects, for hosts that exchange them as such; exported by the plug-in.
///
/// Pure functions, but that a downlink command read from JSON is stamped with the current time;
/// they may be called from any thread. Nothing is refused: a missing or mistyped key gives the
/// default of QJsonValue's accessor (0, an empty text or object, NONE for an unknown queue status),
/// a number that is not whole or not within 32 bits reads as the int 0. Writers write every key.
/// Times are seconds since the Unix epoch. Payloads are hexadecimal, lowercase on output, but for
/// fromJson<model::message>.
namespace model_convertors {

/// Defined for the six records declared below.
template <typename Record>
Record fromJson(const QJsonObject& object);

/// The status is read from "status" as a number; `timestamp` is the current time in UTC. `ttl`,
/// `db_id` and `extra_text` stay empty.
template <>
Q_DECL_EXPORT model::dl_message fromJson<model::dl_message>(const QJsonObject& object);

/// Times in UTC.
template <>
Q_DECL_EXPORT model::hb_message fromJson<model::hb_message>(const QJsonObject& object);

/// Times in UTC.
template <>
Q_DECL_EXPORT model::in_message fromJson<model::in_message>(const QJsonObject& object);

/// Not the inverse of toJson: times are in local time, "payload" is taken as it stands (no
/// hexadecimal) and "hw_type" is a number whose low 8 bits are the one character of the text.
template <>
Q_DECL_EXPORT model::message fromJson<model::message>(const QJsonObject& object);

/// Query parameters that are not text are empty.
template <>
Q_DECL_EXPORT model::custom_cmd fromJson<model::custom_cmd>(const QJsonObject& object);

/// A queue's settings ("repeat", "start_from", "status", "timeout") and its elements are members
/// of one object; a member that is an object is an element, whatever its name.
template <>
Q_DECL_EXPORT model::dl_queues fromJson<model::dl_queues>(const QJsonObject& object);

/// `extended_data` is not written.
Q_DECL_EXPORT QJsonObject toJson(const model::dev_value& value);

/// Every member, under its name.
Q_DECL_EXPORT QJsonObject toJson(const model::dev_event& event);

/// Every member but the three extra ones, under its name.
Q_DECL_EXPORT QJsonObject toJson(const model::message& message);

/// The status is written under "dl_status" by name, empty for a value that has none.
Q_DECL_EXPORT QJsonObject toJson(const model::dl_message& message);

/// An element whose id is the name of a queue setting is overwritten by that setting.
Q_DECL_EXPORT QJsonObject toJson(const model::dl_queues& queues);

} // namespace model_convertors
