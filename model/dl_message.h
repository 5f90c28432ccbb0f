#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QString>

namespace model {

/// One downlink command for a device.
///
/// A plain value; the member order is part of the binary contract between host and plug-in.
struct dl_message {
    /// Processing state. The number is what is stored; the name is what JSON output carries.
    enum class dl_status : int {
        PENDING = 0,   ///< Not sent yet.
        WAIT_DATA = 1, ///< Waits for data; counts as not acknowledged, like PENDING.
        EXECUTED = 2,  ///< Acknowledged.
        TIMEOUT = 3,   ///< Given up.
    };

    /// Acknowledgement flag, 0 or 1, set by the host.
    int f_ack = 0;
    /// Device number.
    int modem_id = 0;
    /// Command time-out in the host's own unit; stored as it is.
    int timeout = 0;
    /// Instant after which the stored document expires (the server removes it about 60 s later).
    QDateTime ttl;
    /// When the command was created; stored in whole seconds.
    QDateTime timestamp;
    /// Identifier of the stored command: 24 lowercase hexadecimal digits, given by the store.
    QString db_id;
    /// Key of the client that issued the command.
    QString api_key;
    /// Where the command is in its processing.
    dl_status status = dl_status::PENDING;
    /// Command content.
    QJsonObject data;
    /// Raw downlink payload, as bytes.
    QByteArray payload;
    /// The host's own; never stored, empty when read from the store.
    QString extra_text;
};

} // namespace model
