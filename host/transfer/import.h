#pragma once

#include <QString>

namespace host {

class Session;

struct ImportOptions {
    QString folder;
    /// Into stores that are not empty; what is there already stays.
    bool merge = false;
    /// The same, but what is there already is replaced.
    bool replace = false;
};

/// Stores what an export has written. Looks at all files before it stores anything. False if the
/// user ended it, or if a store has fewer records afterwards than it should have. Throws Failure,
/// naming store, file and line.
bool runImport(const ImportOptions& options, Session& session);

} // namespace host
