#pragma once

#include "model/dev_value.h"

#include <QString>

#include <list>
#include <span>
#include <vector>

namespace host {

/// One number at one instant, in seconds since the Unix epoch.
struct Point {
    qint64 secs = 0;
    double value = 0;
};

/// The numbers that a device has of an OBIS code.
struct Curve {
    int device = 0;
    QString obisCode;
    /// Empty if no value has one.
    QString unit;
    /// Oldest first.
    std::vector<Point> points;
};

/// `newestFirst` are the device's values of the code. Those that are no numbers are left out.
Curve makeCurve(int device, const QString& obisCode,
                const std::list<model::dev_value>& newestFirst);

/// The points, parted where nothing came for more than three times the usual distance of two
/// points, which is the median.
std::vector<std::span<const Point>> stretches(const std::vector<Point>& points);

} // namespace host
