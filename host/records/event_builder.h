#pragma once

#include "model/dev_event.h"
#include "model/message.h"

#include <QJsonObject>
#include <QString>

#include <vector>

namespace host {

/// What an event of the demo is about; the event_code of its record.
enum class EventCode : int {
    /// The meter's status is not OK.
    Status = 1,
    /// The meter has set an error flag.
    ErrorFlag = 2,
};

/// A word of a meter's status.
struct StatusWord {
    /// The member of the readings that has it.
    QString member;
    EventCode code = EventCode::Status;
    QString word;
    /// Which word of the member it is, counted from 0.
    int place = 0;
};

/// The words of the readings' members "status", "current_status", "error" and "error_flags", but
/// for the word OK. A word that several members repeat is there once.
std::vector<StatusWord> statusWords(const QJsonObject& readings);

/// Finds the status changes that the messages' readings tell of: an event for each of their
/// statusWords(). Its text is the word, its parameter the word's place, and its time that of the
/// message.
std::vector<model::dev_event> findEvents(const std::vector<model::message>& messages);

} // namespace host
