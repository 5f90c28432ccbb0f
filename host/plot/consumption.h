#pragma once

#include "host/plot/curve.h"

#include <vector>

namespace host {

enum class Per {
    Hour,
    Day,
};

/// What a register has counted in one hour or day, from `begin` to before `end` (seconds since the
/// Unix epoch).
struct Portion {
    enum class Kind {
        Known,
        /// There are no readings near enough to one of its ends.
        NoReadings,
        /// The counter stood lower at one reading than at the one before, as when the meter was
        /// replaced.
        WentBack,
    };

    qint64 begin = 0;
    qint64 end = 0;
    Kind kind = Kind::Known;
    /// 0 unless it is Known.
    double amount = 0;
};

/// The consumption in each whole hour or day between two readings of the register.
///
/// It is the difference of what the register stood at when the portion ended and when it began.
/// Where no reading was taken just then, that is interpolated between the readings before and
/// after, if these are no more than one and a half portions apart. `boundaries` are where portions
/// end and the next begin, in order.
std::vector<Portion> consumption(const std::vector<Point>& readings,
                                 const std::vector<qint64>& boundaries);

} // namespace host
