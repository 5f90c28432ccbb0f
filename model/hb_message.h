#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace model {

/// A heartbeat message of a device. It passes through to the host and is not stored.
///
/// A plain value; the member order is part of the binary contract between host and plug-in.
struct hb_message {
    /// Device number.
    int modem_id = 0;
    /// Base station that received the message.
    int station_id = 0;
    /// Message counter of the device.
    int iterator = 0;
    /// Physical layer (radio mode).
    QString phy;
    /// Signal-to-noise ratio.
    int snr = 0;
    /// Received signal strength.
    int rssi = 0;
    /// Device hardware type.
    QString hw_type;
    /// Device protocol name.
    QString protocol;
    /// When the base station detected the radio message; UTC.
    QDateTime time_detected;
    /// When the message was registered; UTC.
    QDateTime time_saved;
    /// Raw radio payload, as bytes.
    QByteArray payload;
    /// Time zone of the base station.
    int bs_tz = 0;
    /// Temperature that the device reports, in the device's own unit.
    double temperature = 0.0;
    /// Supply voltage that the device reports, in the device's own unit.
    double voltage = 0.0;
};

} // namespace model
