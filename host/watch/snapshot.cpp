#include "host/watch/snapshot.h"

#include <algorithm>
#include <utility>

namespace host {

int ratePerMinute(const std::vector<WatchedRecord>& records, std::size_t asked,
                  const QDateTime& now) {
    constexpr qint64 minuteMsecs = 60'000;
    const auto count = std::ranges::count_if(records, [&](const WatchedRecord& record) {
        return record.time.msecsTo(now) < minuteMsecs;
    });
    if (records.size() < asked || std::cmp_less(count, asked)) {
        return static_cast<int>(count);
    }
    // A record's time is of whole seconds.
    const auto msecs = std::max<qint64>(records.back().time.msecsTo(now), 1000);
    return static_cast<int>(count * minuteMsecs / msecs);
}

} // namespace host
