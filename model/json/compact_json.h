#pragma once

#include "model/dl_queues.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>

class json_writer;

/// The compact JSON text of an object, and of a record without the object in between. Pure
/// functions.
namespace model_convertors {

/// As Qt writes it, which is what the others are byte for byte.
inline QByteArray plainJson(const QJsonObject& object) {
    return QJsonDocument{object}.toJson(QJsonDocument::Compact);
}

/// Ordinary objects (json_writer.h) directly, all others as above.
QByteArray compactJson(const QJsonObject& object);

/// That of toJson(queues), directly if the record is ordinary.
QByteArray compactJson(const model::dl_queues& queues);

/// Writes that text. False, and what was written is of no use, unless the record is ordinary: its
/// parts are, no queue and no element has the name of another, and no element that of a setting.
bool writeOrdinary(json_writer& json, const model::dl_queues& queues);

} // namespace model_convertors
