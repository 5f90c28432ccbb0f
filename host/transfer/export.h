#pragma once

#include <QString>

namespace host {

class Session;

/// Writes everything in the plug-in's database and in its three Redis databases into a folder; goes
/// on with one that was broken off, with the stores that are not whole yet. False if the user ended
/// it. Throws Failure, naming store, server or file.
bool runExport(const QString& folder, Session& session);

} // namespace host
