#pragma once

#include <QJsonObject>
#include <QString>

namespace contract {

/// The JSON object in the file, whatever its members are: they are the plug-in's to judge. Throws
/// std::runtime_error, naming the file.
QJsonObject readSettings(const QString& fileName);

} // namespace contract
