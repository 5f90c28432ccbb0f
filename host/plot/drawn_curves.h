#pragma once

#include "host/plot/consumption.h"
#include "host/plot/curve.h"
#include "host/plot/picture.h"

#include <QString>

#include <vector>

namespace host {

/// What a curve is of, as "1-0:1.7.0 of device 1001".
QString nameOf(const Curve& curve);

/// What a picture is to be drawn on.
struct Canvas {
    /// About so many tics have room on its time axis.
    int tics = 0;
    /// It takes characters only: all areas look alike, and there is little room beside an axis.
    bool ascii = false;
    /// In this machine's zone rather than in UTC.
    bool local = false;
};

/// A picture of the curves, each of which has points; the lines have gaps where the points have
/// (stretches()). Curves of one unit share an axis. Throws Failure if there are more than two
/// units.
Picture curvePicture(const std::vector<Curve>& curves, const Canvas& canvas);

/// What a register has counted in each hour or day.
struct Consumption {
    Curve counter;
    /// At least one.
    std::vector<Portion> portions;
};

/// A picture of the consumption, each portion a bar; one that is not known is shown as what it is.
/// Otherwise as curvePicture().
Picture consumptionPicture(const std::vector<Consumption>& all, Per per, const Canvas& canvas);

} // namespace host
