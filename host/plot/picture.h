#pragma once

#include "host/plot/time_axis.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace host {

/// One thing that is drawn, for gnuplot.
struct Drawing {
    /// What the legend calls it; empty for what it does not name.
    QString name;
    /// The lines of its data; times are already as the axis wants them.
    QString data;
    /// Which of the data's columns are drawn how: what gnuplot has after the data's name.
    QString style;
    /// 0 for the axis at the left, 1 for that at the right.
    int axis = 0;
};

struct ValueAxis {
    QString label;
    /// Whether the axis begins at 0.
    bool fromZero = false;
};

struct Picture {
    QString title;
    TimeAxis time;
    /// One or two.
    std::vector<ValueAxis> values;
    std::vector<Drawing> drawings;
};

/// The gnuplot commands that draw the picture with this of its terminals, on the standard output.
QString plotScript(const Picture& picture, const QString& terminal);

} // namespace host
