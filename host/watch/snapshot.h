#pragma once

#include <QDateTime>
#include <QString>

#include <array>
#include <vector>

namespace host {

/// One record, for a line of a list.
struct WatchedRecord {
    QDateTime time;
    int device = 0;
    QString text;
};

/// The newest records of one kind, the newest first.
struct WatchedList {
    std::vector<WatchedRecord> records;
    int perMinute = 0;
};

/// What a watcher has seen at one time.
struct Snapshot {
    enum Kind { Uplinks, Values, Events };

    QDateTime time;
    std::array<WatchedList, 3> lists;
};

/// How many records come in a minute: those of the last one; if all that were asked for are younger
/// than that, as many as would have come at their rate. `asked` is how many there could be.
int ratePerMinute(const std::vector<WatchedRecord>& records, std::size_t asked,
                  const QDateTime& now);

} // namespace host
