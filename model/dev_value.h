#pragma once

#include <QDateTime>
#include <QJsonDocument>
#include <QString>
#include <QVariant>

namespace model {

/// One reading of a device: the value of one OBIS code at one instant.
///
/// A plain value; the member order is part of the binary contract between host and plug-in.
struct dev_value {
    /// Device number.
    int modem_id = 0;
    /// Instant that the value refers to; stored in whole seconds.
    QDateTime timestamp;
    /// OBIS identifier of the quantity (IEC 62056-61), for example "1-0:1.8.0".
    QString obis_code;
    /// Class of value, of the host's choice.
    QString tag;
    /// Additional content, a JSON object.
    QJsonDocument extended_data;
    /// Booleans, ints, doubles and strings are stored as such. A 64-bit integer is narrowed to 32
    /// bits. Any other type is stored as the text "unknown type" (an invalid one as "invalid
    /// type"), and only its type number survives.
    QVariant value;
    /// The uplink message that the value was parsed from.
    QString message_id;
    /// Instant after which the stored document expires (the server removes it about 60 s later).
    QDateTime ttl;
};

} // namespace model
