#pragma once

#include "model/json/json_members.h"

#include <QByteArray>
#include <QDateTime>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

#include <string_view>

/// How times, bytes and contents stand in the records' JSON.
namespace model_convertors {

inline QDateTime time(const json_members& json, std::string_view key, Qt::TimeSpec spec) {
    return QDateTime::fromSecsSinceEpoch(json.number(key), spec);
}

inline QByteArray hexBytes(const json_members& json, std::string_view key) {
    return QByteArray::fromHex(json.text(key).toLocal8Bit());
}

inline QJsonValue seconds(const QDateTime& time) {
    return QJsonValue{time.toSecsSinceEpoch()};
}

inline QJsonValue hexText(const QByteArray& bytes) {
    return QString::fromLatin1(bytes.toHex());
}

/// An empty document gives null.
inline QJsonValue content(const QJsonDocument& document) {
    return QJsonValue::fromVariant(document.toVariant());
}

} // namespace model_convertors
