#include "host/plot/picture.h"

#include <algorithm>

namespace host {

namespace {

/// A text of gnuplot in single quotes, in which nothing but the quote itself is special.
QString quoted(QString text) {
    text.remove(QLatin1Char('\n'));
    return QLatin1Char('\'') + text.replace(QLatin1Char('\''), QLatin1String("''")) +
           QLatin1Char('\'');
}

QString dataBlocks(const Picture& picture) {
    QString blocks;
    int number = 0;
    for (const auto& drawing : picture.drawings) {
        blocks += QStringLiteral("$data%1 << END_OF_DATA\n%2END_OF_DATA\n")
                      .arg(number++)
                      .arg(drawing.data);
    }
    return blocks;
}

QString timeCommands(const TimeAxis& time) {
    return QStringLiteral("set xlabel %1\n"
                          "set format x %2 timedate\n"
                          "set xtics %3, %4 time\n"
                          "set xrange [%5:%6]\n")
        .arg(quoted(time.label), time.format)
        .arg(time.firstTic)
        .arg(time.ticSecs)
        .arg(time.begin + time.offsetSecs)
        .arg(time.end + time.offsetSecs);
}

QString valueCommands(const Picture& picture) {
    const bool two = picture.values.size() > 1;
    QString commands;
    for (std::size_t i = 0; i < picture.values.size(); ++i) {
        const auto& axis = picture.values[i];
        const auto name = i == 0 ? QStringLiteral("y") : QStringLiteral("y2");
        commands += QStringLiteral("set %1label %2\n"
                                   "set format %1 '%.10g'\n"
                                   "set %1tics %3\n"
                                   "set %1range [%4:*]\n")
                        .arg(name, quoted(axis.label),
                             two ? QStringLiteral("nomirror") : QStringLiteral("mirror"),
                             axis.fromZero ? QStringLiteral("0") : QStringLiteral("*"));
    }
    return commands;
}

QString plotCommand(const std::vector<Drawing>& drawings) {
    QStringList parts;
    for (const auto& drawing : drawings) {
        parts.append(
            QStringLiteral("$data%1 %2%3 %4")
                .arg(parts.size())
                .arg(drawing.style, drawing.axis == 1 ? QStringLiteral(" axes x1y2") : QString(),
                     drawing.name.isEmpty() ? QStringLiteral("notitle")
                                            : QStringLiteral("title ") + quoted(drawing.name)));
    }
    return QStringLiteral("plot ") + parts.join(QStringLiteral(", \\\n     ")) + QLatin1Char('\n');
}

} // namespace

QString plotScript(const Picture& picture, const QString& terminal) {
    QString script =
        dataBlocks(picture) +
        QStringLiteral("set encoding utf8\nset title %1\n").arg(quoted(picture.title)) +
        timeCommands(picture.time) + valueCommands(picture);
    const bool legend = std::ranges::any_of(
        picture.drawings, [](const Drawing& drawing) { return !drawing.name.isEmpty(); });
    script += legend ? QStringLiteral("set key tmargin center horizontal\n")
                     : QStringLiteral("set key off\n");
    script += QStringLiteral("set grid\n");
    // So that no curve runs along the frame.
    script += picture.values.front().fromZero
                  ? QStringLiteral("set offsets 0, 0, graph 0.05, 0\n")
                  : QStringLiteral("set offsets 0, 0, graph 0.05, graph 0.05\n");
    if (picture.values.size() == 1) {
        // For the last tic's label.
        script += QStringLiteral("set rmargin 6\n");
    }
    return script + QStringLiteral("set terminal %1 noenhanced\n").arg(terminal) +
           plotCommand(picture.drawings) + QStringLiteral("unset output\n");
}

} // namespace host
