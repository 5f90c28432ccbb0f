#pragma once

#include "host/input/telegram.h"
#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/message.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <list>

namespace host {

/// Where a record came from, for what is said of it.
struct Source {
    QString file;
    /// Counted from 1.
    int lineNumber = 0;
    QByteArray line;
};

/// A telegram as the stores keep it.
struct Uplink {
    model::message message;
    std::list<model::dev_value> values;
    std::list<model::dev_event> events;
    /// The telegram does not say when it was received: another run gives it another time.
    bool timeAssigned = false;
    Source source;
};

/// The number by which the store knows a second copy: the same for telegrams of the same device,
/// time of reception (or without one) and payload; where the payload is not known, of the same
/// readings. The first eight bytes of the SHA-256 of these as a JSON list, most significant first.
/// Frozen: stores hold these numbers.
quint64 uniqueNumber(const Telegram& telegram);

/// The records of a telegram: an uplink, a value for each number among its readings, an event for
/// each word of its status. `now` is the time of a telegram that has none, `expiry` when the stores
/// drop all of it.
Uplink buildUplink(const Telegram& telegram, const QDateTime& now, const QDateTime& expiry);

/// Moves the uplink with its values and events to this time.
void setTime(Uplink& uplink, const QDateTime& time);

/// The text under which the store keeps the uplink; its values and events name it.
QString messageId(quint64 uniqueNumber);

} // namespace host
