#include "host/plot/consumption.h"

#include <algorithm>
#include <optional>

namespace host {

namespace {

/// What the register stood at; nothing if the readings do not tell, being more than `longest`
/// seconds apart. `secs` is not before the first reading, nor after the last.
std::optional<double> standAt(qint64 secs, const std::vector<Point>& readings, qint64 longest) {
    const auto after = std::ranges::lower_bound(readings, secs, {}, &Point::secs);
    if (after->secs == secs) {
        return after->value;
    }
    const auto before = std::prev(after);
    const auto distance = after->secs - before->secs;
    if (distance > longest) {
        return {};
    }
    const auto part = static_cast<double>(secs - before->secs) / static_cast<double>(distance);
    return before->value + (after->value - before->value) * part;
}

/// Whether the counter went back between two readings of which at least a part lies in the portion.
bool wentBack(qint64 begin, qint64 end, const std::vector<Point>& readings) {
    // From the last reading that is not after the beginning to the first that is not before the
    // end.
    const auto first = std::prev(std::ranges::upper_bound(readings, begin, {}, &Point::secs));
    const auto last = std::next(std::ranges::lower_bound(readings, end, {}, &Point::secs));
    return !std::is_sorted(first, last, [](const Point& left, const Point& right) {
        return left.value < right.value;
    });
}

Portion portion(qint64 begin, qint64 end, const std::vector<Point>& readings) {
    Portion result{.begin = begin, .end = end, .kind = Portion::Kind::NoReadings, .amount = 0};
    if (wentBack(begin, end, readings)) {
        result.kind = Portion::Kind::WentBack;
        return result;
    }
    const auto longest = (end - begin) * 3 / 2;
    const auto before = standAt(begin, readings, longest);
    const auto after = standAt(end, readings, longest);
    if (before && after) {
        result.kind = Portion::Kind::Known;
        result.amount = *after - *before;
    }
    return result;
}

} // namespace

std::vector<Portion> consumption(const std::vector<Point>& readings,
                                 const std::vector<qint64>& boundaries) {
    std::vector<Portion> portions;
    for (std::size_t i = 1; i < boundaries.size(); ++i) {
        const auto begin = boundaries[i - 1];
        const auto end = boundaries[i];
        if (!readings.empty() && begin >= readings.front().secs && end <= readings.back().secs) {
            portions.push_back(portion(begin, end, readings));
        }
    }
    return portions;
}

} // namespace host
