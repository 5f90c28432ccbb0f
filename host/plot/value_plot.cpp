#include "host/plot/value_plot.h"

#include "host/failure.h"

#include <QFileInfo>
#include <QLocale>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <ranges>

namespace host {

namespace {

constexpr int timeLimitMsecs = 60'000;

bool isNumber(const QVariant& value) {
    return value.type() == QVariant::Double || value.type() == QVariant::Int;
}

/// A text of gnuplot in single quotes, in which nothing but the quote itself is special.
QString quoted(QString text) {
    text.remove(QLatin1Char('\n'));
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QLatin1String("''")) +
           QLatin1Char('\'');
}

QString dataLines(const std::list<model::dev_value>& values) {
    QString lines;
    // The store gives the newest first.
    for (const auto& value : values | std::views::reverse) {
        if (isNumber(value.value)) {
            lines += QString::number(value.timestamp.toSecsSinceEpoch()) + QLatin1Char(' ') +
                     QString::number(value.value.toDouble(), 'g', QLocale::FloatingPointShortest) +
                     QLatin1Char('\n');
        }
    }
    return lines;
}

} // namespace

QString plotScript(const std::list<model::dev_value>& values, const PlotTarget& target) {
    const auto day = [](const model::dev_value& value) {
        return value.timestamp.toUTC().toString(QStringLiteral("yyyy-MM-dd"));
    };
    const bool oneDay = day(values.front()) == day(values.back());
    const QString timeLabel = oneDay ? QStringLiteral("Time (UTC), ") + day(values.front())
                                     : QStringLiteral("Time (UTC)");

    const QString timeFormat =
        oneDay ? QStringLiteral("'%H:%M:%S'") : QStringLiteral("\"%Y-%m-%d\\n%H:%M\"");
    return QStringLiteral(R"($values << END_OF_VALUES
%1END_OF_VALUES
set title %2 noenhanced
set xlabel %3
set ylabel %4 noenhanced
set timefmt '%s'
set xdata time
set format x %5
set grid
set key off
set rmargin 6
set yrange [0<*:]
set terminal svg size 1000,500 background 'white'
set output %6
plot $values using 1:2 with steps linewidth 2
set terminal pngcairo size 1000,500
set output %7
replot
unset output
)")
        .arg(dataLines(values), quoted(target.title), quoted(timeLabel), quoted(target.valueLabel),
             timeFormat, quoted(target.fileBase + QStringLiteral(".svg")),
             quoted(target.fileBase + QStringLiteral(".png")));
}

void plotValues(const std::list<model::dev_value>& values, const PlotTarget& target) {
    if (std::ranges::none_of(values, [](const auto& value) { return isNumber(value.value); })) {
        throw Failure(QStringLiteral("there are no numbers to draw"));
    }
    const auto program = QStandardPaths::findExecutable(QStringLiteral("gnuplot"));
    if (program.isEmpty()) {
        throw Failure(QStringLiteral("drawing needs the program gnuplot, which is not installed"));
    }
    QProcess gnuplot;
    gnuplot.start(program, {QStringLiteral("-")});
    gnuplot.write(plotScript(values, target).toUtf8());
    gnuplot.closeWriteChannel();
    if (!gnuplot.waitForFinished(timeLimitMsecs)) {
        gnuplot.kill();
        gnuplot.waitForFinished();
        throw Failure(QStringLiteral("gnuplot did not end: ") + gnuplot.errorString());
    }
    if (gnuplot.exitStatus() != QProcess::NormalExit || gnuplot.exitCode() != 0) {
        throw Failure(QStringLiteral("gnuplot failed: ") +
                      QString::fromUtf8(gnuplot.readAllStandardError()).trimmed());
    }
}

} // namespace host
