#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace model {

/// A message of a device together with the device's downlink situation. It passes through to the
/// host and is not stored.
///
/// A plain value; the member order is part of the binary contract between host and plug-in.
/// Members 7 to 18 repeat those of hb_message without a common base: a base would change the
/// layout that hosts are compiled against.
struct in_message {
    /// Physical layer for downlink.
    QString dl_phy;
    QString dl_mode;
    /// Base station of the last downlink.
    int last_dl_bs = 0;
    double last_dl_bs_aver_busyness = 0.0;
    double last_dl_bs_busyness = 0.0;
    /// Seconds since the Unix epoch of the last successful downlink.
    int last_success_dl_ts = 0;
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
};

} // namespace model
