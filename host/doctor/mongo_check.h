#pragma once

#include "host/doctor/finding.h"

#include <QJsonObject>

namespace host {

/// Looks at the MongoDB server of the settings: whether it is there, its clock, and whether the
/// plug-in's database is laid out and kept as it should be. Only reads. Blocks, up to the time-outs
/// of the connection string; throws nothing: what fails is a finding. Shows times in this
/// machine's zone if `localTimes`, else in UTC.
Findings mongoFindings(const QJsonObject& settings, bool localTimes);

} // namespace host
