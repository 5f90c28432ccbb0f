#pragma once

#include <QDateTime>

#include <array>
#include <cstddef>

namespace bson_utils {

/// Turns instants into local time, for one query: remembers the latest ones.
///
/// Qt asks the system for the zone's offset twice with every conversion, and where the variable TZ
/// is not set the C library looks at the zone's file each time, which takes longer than everything
/// else about a record. The records of a query often expire at the same instant, or arrived in the
/// same second.
class local_times {
public:
    QDateTime at(qint64 utcMsecs) {
        entry& known = m_entries[static_cast<std::size_t>(utcMsecs / 1000) % m_entries.size()];
        if (known.utcMsecs != utcMsecs || known.time.isNull()) {
            known = {utcMsecs, QDateTime::fromMSecsSinceEpoch(utcMsecs)};
        }
        return known.time;
    }

private:
    struct entry {
        qint64 utcMsecs = 0;
        QDateTime time;
    };

    std::array<entry, 16> m_entries;
};

} // namespace bson_utils
