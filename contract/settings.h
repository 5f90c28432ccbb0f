#pragma once

#include <QJsonObject>
#include <QString>

namespace contract {

/// The JSON object in the file, whatever its members are: they are the plug-in's to judge. If no
/// file is named, from where kelvro-host would have it (host::findSettings()). Throws
/// host::Failure.
QJsonObject findSettings(const QString& fileName);

} // namespace contract
