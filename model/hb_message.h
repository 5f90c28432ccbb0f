#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace model {

/// A heartbeat message of a device. It passes through to the host and is not stored.
///
/// A plain value; the member order is part of the binary contract between host and plug-in.
struct hb_message {
    int modem_id = 0;
    int station_id = 0;
    /// Message counter of the device.
    int iterator = 0;
    /// Physical layer (radio mode).
    QString phy;
    int snr = 0;
    int rssi = 0;
    QString hw_type;
    QString protocol;
    /// UTC.
    QDateTime time_detected;
    /// UTC.
    QDateTime time_saved;
    QByteArray payload;
    /// Time zone of the base station.
    int bs_tz = 0;
    double temperature = 0.0;
    double voltage = 0.0;
};

} // namespace model
