#pragma once

#include "host/plot/consumption.h"

#include <QString>

#include <vector>

namespace host {

/// How a picture's time axis is drawn. All times are in seconds since the Unix epoch.
struct TimeAxis {
    /// What the axis shows, the zone and, if all is of one day, the day.
    QString label;
    /// Of the time at a tic, as gnuplot wants it.
    QString format;
    qint64 begin = 0;
    qint64 end = 0;
    /// gnuplot knows no zones: it is given times that are so much later.
    qint64 offsetSecs = 0;
    /// The distance of two tics; and where, with the offset in it, one is that is not after
    /// `begin`.
    qint64 ticSecs = 0;
    qint64 firstTic = 0;
};

/// An axis with about `tics` tics, in UTC, or else in this machine's zone: with its distance from
/// UTC at the end, so that every hour is as long as another also where summer time begins.
TimeAxis timeAxis(qint64 begin, qint64 end, bool local, int tics);

/// The beginnings of hours or days, in UTC or in this machine's zone, from the last one that is not
/// after `begin` to the first that is not before `end`.
std::vector<qint64> boundaries(Per per, qint64 begin, qint64 end, bool local);

} // namespace host
