#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>
#include <QVariant>

#include <QDebug>

#include <ostream>
#include <string>

/// What a failed assertion prints of Qt's types. Without these GoogleTest prints a QString as a
/// list of raw character codes. Found by argument-dependent lookup, so they stand where Qt's types
/// do, in the global namespace.

inline void PrintTo(const QString& text, std::ostream* out) {
    if (text.isNull()) {
        *out << "null QString";
        return;
    }
    // QDebug escapes what is not printable and lone surrogates.
    QString printed;
    QDebug{&printed}.nospace() << text;
    *out << printed.toStdString();
}

inline void PrintTo(const QByteArray& bytes, std::ostream* out) {
    *out << bytes.size() << " bytes " << bytes.toHex(' ').toStdString();
}

/// Instant, milliseconds since the epoch, UTC or local: two that look alike may differ in either.
inline void PrintTo(const QDateTime& time, std::ostream* out) {
    if (time.isNull()) {
        *out << "null QDateTime";
        return;
    }
    QString printed;
    QDebug{&printed}.nospace() << time;
    *out << printed.toStdString() << " (" << time.toMSecsSinceEpoch() << " ms)";
}

inline void PrintTo(const QJsonObject& object, std::ostream* out) {
    *out << QJsonDocument{object}.toJson(QJsonDocument::Compact).toStdString();
}

inline void PrintTo(const QJsonArray& array, std::ostream* out) {
    *out << QJsonDocument{array}.toJson(QJsonDocument::Compact).toStdString();
}

inline void PrintTo(const QJsonDocument& document, std::ostream* out) {
    if (document.isNull()) {
        *out << "null QJsonDocument";
        return;
    }
    *out << document.toJson(QJsonDocument::Compact).toStdString();
}

inline void PrintTo(const QJsonValue& value, std::ostream* out) {
    if (value.isUndefined()) {
        *out << "undefined QJsonValue";
        return;
    }
    const std::string listed =
        QJsonDocument{QJsonArray{value}}.toJson(QJsonDocument::Compact).toStdString();
    *out << listed.substr(1, listed.size() - 2);
}

inline void PrintTo(const QVariant& value, std::ostream* out) {
    QString printed;
    QDebug{&printed}.nospace() << value;
    *out << printed.toStdString();
}
