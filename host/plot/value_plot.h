#pragma once

#include "model/dev_value.h"

#include <QString>

#include <list>
#include <vector>

namespace host {

/// What a curve shows, and where it goes.
struct PlotTarget {
    /// The picture's title.
    QString title;
    /// Label of the values' axis: the quantity and its unit.
    QString valueLabel;
    /// The files are this name with .svg and .png added; existing ones are replaced.
    QString fileBase;
};

/// Draws the numeric values over their time (UTC) with gnuplot and writes an SVG and a PNG file.
/// Blocks while gnuplot runs, at most a minute. Throws Failure if gnuplot is not installed, fails
/// or does not end, and if no value is a number.
void plotValues(const std::list<model::dev_value>& values, const PlotTarget& target);

/// The gnuplot commands of plotValues, with the data within.
QString plotScript(const std::list<model::dev_value>& values, const PlotTarget& target);

} // namespace host
