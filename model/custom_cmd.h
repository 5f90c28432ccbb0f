#pragma once

#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QString>

namespace model {

/// A custom command addressed to a list of devices.
///
/// A plain value; the member order is part of the binary contract between host and plug-in.
struct custom_cmd {
    /// Name of the command type.
    QString type;
    /// Content of the command.
    QJsonObject body;
    /// Name of the issuing instance.
    QString instance;
    /// Device numbers.
    QList<int> modem_id;
    /// Query parameters as text.
    QMap<QString, QString> query;
};

} // namespace model
