#pragma once

#include "host/session/session.h"

#include <QJsonValue>
#include <QString>

#include <optional>

namespace host {

/// The driver state of a device: named values, which Redis has under the key PREFIX:DEVICE and
/// MongoDB, where a durable copy is kept, under the device alone.
struct StateOf {
    int device = 0;
    QString prefix;
};

/// What a state can hold of what somebody types: a number, a JSON object, or a text, which need not
/// be in quotes unless it would be something else without them. Empty for what is none of these: a
/// list, true, false, null, or what begins as JSON and is none.
std::optional<QJsonValue> stateValue(const QString& typed);

/// Each of these blocks on both servers, and throws Failure if they do not do their part.

/// Shows the values by name.
void showState(const StateOf& state, Session& session);

/// Sets one value and leaves the others as they are stored; `persist` stores the durable copy too.
/// `value` is one that stateValue() gives.
void setStateValue(const StateOf& state, const QString& name, const QJsonValue& value, bool persist,
                   Session& session);

/// Deletes the state and its durable copy.
void deleteState(const StateOf& state, Session& session);

/// Shows all states that Redis has under the prefix, by device. The interface finds only those
/// whose prefix has a colon in it.
void listStates(const QString& prefix, Session& session);

} // namespace host
