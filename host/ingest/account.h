#pragma once

#include <QtGlobal>

namespace host {

/// What an ingest has done.
struct IngestAccount {
    /// Read, blank ones not counted.
    qint64 lines = 0;
    /// Stored.
    qint64 uplinks = 0;
    /// Refused by the store, which had them already.
    qint64 uplinksThere = 0;
    qint64 values = 0;
    qint64 valuesThere = 0;
    qint64 events = 0;
    qint64 eventsThere = 0;
    /// Lines of which something was refused for another reason than that it is there.
    qint64 rejected = 0;
    /// Lines that were read, but not stored to the end because the work was ended before.
    qint64 unfinished = 0;
};

} // namespace host
