#pragma once

#include <QDateTime>
#include <QJsonDocument>
#include <QString>

namespace model {

/// One event of a device: a status change, an alarm, an error flag.
///
/// A plain value; the member order is part of the binary contract between host and plug-in.
struct dev_event {
    /// Device number.
    int modem_id = 0;
    /// When the event happened; stored in whole seconds.
    QDateTime timestamp;
    /// Number of the event, of the host's choice.
    int event_code = 0;
    /// The uplink message that the event was parsed from.
    QString message_id;
    /// Event text.
    QString message;
    /// Additional content, a JSON object.
    QJsonDocument extended_data;
    /// Event parameter.
    int parameter = 0;
    /// Instant after which the stored document expires (the server removes it about 60 s later).
    QDateTime ttl;
};

} // namespace model
