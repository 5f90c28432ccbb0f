#pragma once

#include <QString>

#include <vector>

namespace host {

/// What the calls of an operation took.
struct Measurement {
    QString store;
    QString operation;
    /// Of each call.
    std::vector<double> msecs;
    qint64 records = 0;

    /// In a second, of the time in the calls.
    double recordRate() const;

    /// The shortest time that is not exceeded by this part of the calls: 0.5 for the median.
    double percentileMsecs(double part) const;
};

} // namespace host
