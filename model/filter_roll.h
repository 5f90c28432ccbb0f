#pragma once

#include <QDateTime>
#include <QString>

#include <list>

namespace model {

/// Selects stored uplink messages.
///
/// A plain value; the member order is part of the binary contract between host and plug-in.
struct filter_roll {
    /// Devices; an empty list selects nothing.
    std::list<int> modem_ids;
    /// Tags; an empty list selects any tag. Not read when `by_time_detected` is set.
    std::list<QString> tags;
    /// Start of the period, inclusive; its sub-second part is dropped.
    QDateTime begin;
    /// End of the period, inclusive; its sub-second part is dropped.
    QDateTime end;
    /// false: the period applies to message::timestamp; true: to message::time_detected.
    bool by_time_detected = false;
    /// Maximum number of messages over all devices; 0 is no limit.
    int limit = 0;
};

} // namespace model
