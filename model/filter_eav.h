#pragma once

#include <QDateTime>
#include <QString>

#include <list>

namespace model {

/// Selects stored values and events.
///
/// A plain value; the member order is part of the binary contract between host and plug-in.
struct filter_eav {
    /// Devices; an empty list selects nothing.
    std::list<int> modem_ids;
    /// For values their tags, for events their texts; an empty list selects any.
    std::list<QString> tags;
    /// OBIS codes; an empty list selects any in the plain query. Values only.
    std::list<QString> obis_codes;
    /// Start of the period, inclusive; its sub-second part is dropped.
    QDateTime begin;
    /// End of the period, inclusive; its sub-second part is dropped.
    QDateTime end;
    /// Maximum number of records of the plain query over all devices; 0 is no limit.
    int limit = 0;
    /// Select only the newest and the oldest numeric value per device and OBIS code. Values only.
    bool first_last = false;
};

} // namespace model
