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
    /// Mode of the downlink, by the host's name for it.
    QString dl_mode;
    /// Base station of the last downlink.
    int last_dl_bs = 0;
    /// How busy that base station is on average.
    double last_dl_bs_aver_busyness = 0.0;
    /// How busy that base station was last.
    double last_dl_bs_busyness = 0.0;
    /// Seconds since the Unix epoch of the last successful downlink.
    int last_success_dl_ts = 0;
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
};

} // namespace model
