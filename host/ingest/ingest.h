#pragma once

#include "host/command_line/exit_status.h"
#include "host/session/session.h"

#include <QString>

#include <optional>
#include <string>
#include <vector>

namespace host {

struct IngestOptions {
    /// Names, or "-" for the standard input.
    std::vector<std::string> files{"-"};
    /// Whether the one file is read on where it grows.
    bool follow = false;
    int batchLines = 500;
    qint64 flushAfterSecs = 1;
    /// Empty for none.
    QString rejectsFile;
    /// Of readings, which do not say it on each line.
    std::optional<int> device;
    /// How long the stores keep the records, from when they are stored.
    qint64 keepSecs = qint64{3650} * 86'400;
};

/// Stores the telegrams and readings of files, one JSON object a line, and accounts for them.
/// Failed if some were rejected, or if the work was ended before the end of the files. Blocks on
/// the files and on the servers, which it waits for once it has had them. Throws Failure if a file
/// cannot be read or written, or the stores cannot be opened.
ExitStatus runIngest(const IngestOptions& options, Session& session);

} // namespace host
