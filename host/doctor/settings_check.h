#pragma once

#include "host/doctor/finding.h"

#include <QJsonObject>
#include <QString>

namespace host {

/// What can be said of the settings without asking a server: keys that the plug-in does not know,
/// values that it would not take, and a connection string without the recommended time-outs.
/// Nothing that may be a secret is in a finding.
Findings settingsFindings(const QJsonObject& settings);

/// Whether others than the file's user and group may read the passwords in it.
Findings settingsFileFindings(const QString& fileName, const QJsonObject& settings);

} // namespace host
