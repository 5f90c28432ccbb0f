#include "host/plot/plot_command.h"

#include "host/check/attempt.h"
#include "host/file_writing.h"
#include "host/input/meter_reading.h"
#include "host/input/settings.h"
#include "host/plot/drawn_curves.h"
#include "host/plot/gnuplot.h"
#include "host/query/record_query.h"
#include "host/records/filters.h"
#include "interfaces/ieav_repository.h"

#include <ftxui/screen/terminal.hpp>

#include <algorithm>

namespace host {

namespace {

constexpr int ticsOfFile = 10;
constexpr int columnsOfTic = 20;

qint64 lengthOf(Per per) {
    return per == Per::Hour ? 3600 : 86'400;
}

std::list<int> devicesOf(const PlotOptions& options, Session& session) {
    return options.devices.empty()
               ? std::list{deviceNumber(
                     openRecords(options.readingsFile, readMeterReadings, session.results()))}
               : eachOnce(options.devices);
}

/// Of one device and code. A register is read a little beyond the period, for what it stood at when
/// the period began and ended.
model::filter_eav filterOf(const PlotOptions& options, int device, const QString& code) {
    auto filter = anyTime<model::filter_eav>({device});
    const qint64 beyond = options.per ? lengthOf(*options.per) * 3 / 2 : 0;
    filter.obis_codes = {code};
    filter.begin = std::max(filter.begin, options.period.begin.addSecs(-beyond));
    filter.end = std::min(filter.end, options.period.end.addSecs(beyond));
    filter.limit = limitToAsk(options.limit);
    return filter;
}

Curve readCurve(const PlotOptions& options, int device, const QString& code, Session& session) {
    auto& repository = *session.values().EAVRepository();
    const auto returned =
        attempt(QStringLiteral("reading the values at ") + serverName(session.settings()),
                [&] { return repository.GetValues(filterOf(options, device, code)); });
    auto& values = (*returned)[device];
    if (options.limit != 0 && values.size() > static_cast<std::size_t>(options.limit)) {
        values.pop_back();
        session.remarks().line(QStringLiteral("There are more values of %1 of device %2: only the "
                                              "newest %3 are drawn (--limit).")
                                   .arg(code)
                                   .arg(device)
                                   .arg(options.limit));
    }
    auto curve = makeCurve(device, code, values);
    if (values.empty()) {
        session.remarks().line(QStringLiteral("The store has no values of %1.").arg(nameOf(curve)));
    } else if (curve.points.size() < values.size()) {
        session.remarks().line(QStringLiteral("%1 values of %2 are no numbers and left out.")
                                   .arg(values.size() - curve.points.size())
                                   .arg(nameOf(curve)));
    }
    return curve;
}

/// Those that have points.
std::vector<Curve> readCurves(const PlotOptions& options, Session& session) {
    const auto codes = options.obisCodes.empty() ? std::list{QStringLiteral("1-0:1.7.0")}
                                                 : eachOnce(options.obisCodes);
    std::vector<Curve> curves;
    for (const int device : devicesOf(options, session)) {
        for (const auto& code : codes) {
            auto curve = readCurve(options, device, code, session);
            if (!curve.points.empty()) {
                curves.push_back(std::move(curve));
            }
        }
    }
    if (curves.empty()) {
        throw Failure(options.devices.empty()
                          ? QStringLiteral("there is nothing to draw; the demo stores values for "
                                           "12 hours")
                          : QStringLiteral("there is nothing to draw"));
    }
    return curves;
}

std::vector<Portion> portionsOf(const PlotOptions& options, Per per, const Curve& curve,
                                bool local) {
    const auto begin = std::max(options.period.begin.toSecsSinceEpoch(), curve.points.front().secs);
    const auto end = std::min(options.period.end.toSecsSinceEpoch(), curve.points.back().secs);
    return begin > end ? std::vector<Portion>()
                       : consumption(curve.points, boundaries(per, begin, end, local));
}

QString counted(qint64 count, const QString& thing) {
    return QStringLiteral("%1 %2%3").arg(count).arg(thing,
                                                    count == 1 ? QString() : QStringLiteral("s"));
}

struct Drawn {
    Picture picture;
    /// What was drawn, one line for each curve.
    QStringList account;
};

/// The account, and the remark that the curve is none of a register.
QString accountOf(const Consumption& each, const QString& unitOfTime, Console& remarks) {
    const auto count = [&](Portion::Kind kind) {
        return std::ranges::count(each.portions, kind, &Portion::kind);
    };
    const auto missing = count(Portion::Kind::NoReadings);
    const auto back = count(Portion::Kind::WentBack);
    auto text = QStringLiteral("consumption of %1: %2")
                    .arg(nameOf(each.counter),
                         counted(static_cast<qint64>(each.portions.size()), unitOfTime));
    if (missing != 0) {
        text += QStringLiteral(", %1 without readings").arg(missing);
    }
    if (back != 0) {
        text += QStringLiteral(", %1 in which the register went back").arg(back);
    }
    if (back > count(Portion::Kind::Known)) {
        remarks.line(QStringLiteral("%1 goes up and down, as no register does: it is drawn as a "
                                    "curve without --per.")
                         .arg(nameOf(each.counter)));
    }
    return text;
}

Drawn drawConsumption(const PlotOptions& options, const std::vector<Curve>& curves,
                      const Canvas& canvas, Console& remarks) {
    const auto per = *options.per;
    const auto unitOfTime = per == Per::Hour ? QStringLiteral("hour") : QStringLiteral("day");
    std::vector<Consumption> all;
    for (const auto& curve : curves) {
        Consumption each{curve, portionsOf(options, per, curve, canvas.local)};
        if (each.portions.empty()) {
            remarks.line(QStringLiteral("The values of %1 are not of a whole %2 and left out.")
                             .arg(nameOf(curve), unitOfTime));
        } else {
            all.push_back(std::move(each));
        }
    }
    if (all.empty()) {
        throw Failure(QStringLiteral("there is not a whole %1 to draw").arg(unitOfTime));
    }
    Drawn drawn{consumptionPicture(all, per, canvas), {}};
    for (const auto& each : all) {
        drawn.account.append(accountOf(each, unitOfTime, remarks));
    }
    return drawn;
}

Drawn drawCurves(const std::vector<Curve>& curves, const Canvas& canvas) {
    Drawn drawn{curvePicture(curves, canvas), {}};
    for (const auto& curve : curves) {
        drawn.account.append(
            QStringLiteral("%1 of %2")
                .arg(counted(static_cast<qint64>(curve.points.size()), QStringLiteral("value")),
                     nameOf(curve)));
    }
    return drawn;
}

/// With characters, so many columns wide and lines high.
QString asciiTerminal(int width, int height) {
    return QStringLiteral("dumb nofeed size %1,%2").arg(width).arg(height);
}

/// A file, and the gnuplot terminal that draws it.
struct Target {
    QString terminal;
    QString fileName;
};

std::vector<Target> fileTargets(const PlotOptions& options) {
    const Target svg{QStringLiteral("svg size 1000,500 background 'white'"),
                     options.fileBase + QStringLiteral(".svg")};
    const Target png{QStringLiteral("pngcairo size 1000,500"),
                     options.fileBase + QStringLiteral(".png")};
    if (options.fileBase.endsWith(QLatin1String(".svg"))) {
        return {{svg.terminal, options.fileBase}};
    }
    if (options.fileBase.endsWith(QLatin1String(".png"))) {
        return {{png.terminal, options.fileBase}};
    }
    return {svg, png};
}

/// Without the form feed and the blanks that gnuplot has put around it.
QByteArray withoutMargins(QByteArray picture) {
    picture.replace("\f", "");
    QByteArray lines;
    for (auto line : picture.split('\n')) {
        while (line.endsWith(' ')) {
            line.chop(1);
        }
        if (!line.isEmpty() || !lines.isEmpty()) {
            lines += line + '\n';
        }
    }
    while (lines.endsWith("\n\n")) {
        lines.chop(1);
    }
    return lines;
}

} // namespace

void runPlot(const PlotOptions& options, Session& session) {
    auto& console = session.results();
    const auto terminal = ftxui::Terminal::Size();
    const Canvas canvas{.tics =
                            options.ascii ? std::max(1, terminal.dimx / columnsOfTic) : ticsOfFile,
                        .ascii = options.ascii,
                        .local = session.options().localTimes};
    const auto curves = readCurves(options, session);
    const auto drawn = options.per ? drawConsumption(options, curves, canvas, session.remarks())
                                   : drawCurves(curves, canvas);
    QStringList files;
    if (options.ascii) {
        // A line for each curve, and the shell's.
        const int height = std::max(10, terminal.dimy - drawn.account.size() - 1);
        console.bytes(withoutMargins(
            runGnuplot(plotScript(drawn.picture, asciiTerminal(terminal.dimx, height)))));
    } else {
        for (const auto& target : fileTargets(options)) {
            writeFile(target.fileName, runGnuplot(plotScript(drawn.picture, target.terminal)));
            files.append(target.fileName);
        }
    }
    for (const auto& line : drawn.account) {
        console.line(line);
    }
    if (!files.isEmpty()) {
        console.line(QStringLiteral("drawn into ") + files.join(QStringLiteral(" and ")));
    }
}

} // namespace host
