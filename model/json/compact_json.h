#pragma once

#include "model/dl_queues.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>

/// The compact JSON text of an object, and of a record without the object in between. Pure
/// functions.
namespace model_convertors {

/// As Qt writes it, which is what the others are byte for byte.
inline QByteArray plainJson(const QJsonObject& object) {
    return QJsonDocument{object}.toJson(QJsonDocument::Compact);
}

/// Ordinary objects (json_writer.h) directly, all others as above.
QByteArray compactJson(const QJsonObject& object);

/// That of toJson(queues). Ordinary records directly: no queue and no element twice under one
/// name, and no element named like a setting.
QByteArray compactJson(const model::dl_queues& queues);

} // namespace model_convertors
