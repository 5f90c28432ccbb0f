#include "host/plot/curve.h"

#include "host/records/value_unit.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <ranges>

namespace host {

namespace {

constexpr int usualDistances = 3;

bool isNumber(const QVariant& value) {
    return value.type() == QVariant::Double || value.type() == QVariant::Int;
}

/// The longest distance of two points with no gap between.
qint64 longestStep(const std::vector<Point>& points) {
    std::vector<qint64> distances;
    for (std::size_t i = 1; i < points.size(); ++i) {
        // Several values of one second say nothing of how often they come.
        if (const auto distance = points[i].secs - points[i - 1].secs; distance > 0) {
            distances.push_back(distance);
        }
    }
    if (distances.empty()) {
        return 0;
    }
    const auto median = distances.begin() + static_cast<std::ptrdiff_t>(distances.size() / 2);
    std::ranges::nth_element(distances, median);
    return usualDistances * *median;
}

} // namespace

Curve makeCurve(int device, const QString& obisCode,
                const std::list<model::dev_value>& newestFirst) {
    Curve curve{.device = device, .obisCode = obisCode, .unit = {}, .points = {}};
    for (const auto& value : newestFirst | std::views::reverse) {
        if (isNumber(value.value)) {
            curve.points.push_back({value.timestamp.toSecsSinceEpoch(), value.value.toDouble()});
            if (const auto unit = unitOf(value); !unit.isEmpty()) {
                curve.unit = unit;
            }
        }
    }
    return curve;
}

std::vector<std::span<const Point>> stretches(const std::vector<Point>& points) {
    std::vector<std::span<const Point>> result;
    const auto longest = longestStep(points);
    auto rest = std::span(points);
    while (!rest.empty()) {
        const auto end =
            std::ranges::adjacent_find(rest, [&](const Point& left, const Point& right) {
                return right.secs - left.secs > longest;
            });
        const auto size =
            end == rest.end() ? rest.size() : static_cast<std::size_t>(end - rest.begin()) + 1;
        result.push_back(rest.first(size));
        rest = rest.subspan(size);
    }
    return result;
}

} // namespace host
