#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonDocument>
#include <QString>

namespace model {

/// One uplink message: what a field device sent through a base station.
///
/// A plain value; the member order is part of the binary contract between host and plug-in.
/// Stored by interfaces::IULAPPMessageRepository with a resolution of whole seconds for
/// `timestamp` and `time_detected` and of milliseconds for `ttl`.
struct message {
    /// The three extra members are the host's own: they are copied with the record and never
    /// stored. A message read from the store has them empty and 0.
    QString extra_text;
    qint64 extra_value1 = 0; ///< See extra_text.
    qint64 extra_value2 = 0; ///< See extra_text.
    /// Device number.
    int modem_id = 0;
    /// Base station that received the message.
    int station_id = 0;
    /// Instant after which the stored document expires (the server removes it about 60 s later).
    QDateTime ttl;
    /// When the server registered the message.
    QDateTime timestamp;
    /// When the base station detected the radio message.
    QDateTime time_detected;
    /// Time-zone offset of the base station, in the host's own unit.
    int bs_timezone_offset = 0;
    /// Physical layer (radio mode).
    QString phy;
    /// Signal-to-noise ratio.
    int snr = 0;
    /// Received signal strength.
    int rssi = 0;
    /// Class of message.
    QString tag;
    /// Number of the message and key of its document: two messages cannot share one.
    quint64 unique_id = 0;
    /// Parsed content, a JSON object.
    QJsonDocument data;
    /// Additional parsed content, a JSON object.
    QJsonDocument extended_data;
    /// Result of parsing the payload.
    QString parse_status;
    /// Device hardware type.
    QString hw_type;
    /// Device protocol name.
    QString protocol;
    /// Raw radio payload, as bytes.
    QByteArray payload;
};

} // namespace model
