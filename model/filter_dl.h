#pragma once

#include <QDateTime>

#include <list>

namespace model {

/// Selects stored downlink commands.
///
/// A plain value; the member order is part of the binary contract between host and plug-in.
struct filter_dl {
    /// Devices, each queried by itself; an empty list selects nothing.
    std::list<int> modem_ids;
    /// Start of the period, inclusive; its sub-second part is dropped.
    QDateTime begin;
    /// End of the period, inclusive; its sub-second part is dropped.
    QDateTime end;
    /// Maximum number of commands per device; 0 is no limit.
    int limit = 0;
};

} // namespace model
