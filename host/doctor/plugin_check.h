#pragma once

#include "host/doctor/finding.h"

#include <QString>

namespace host {

/// Whether the plug-in's file can be loaded, and its version. Loads it, and opens none of its
/// stores.
Findings pluginFindings(const QString& fileName);

} // namespace host
