#include "host/plot/drawn_curves.h"

#include "host/failure.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace host {

namespace {

QString text(double number) {
    return QString::number(number, 'g', QLocale::FloatingPointShortest);
}

/// What the curves of one picture have in common, and what tells them from each other.
class Captions {
public:
    /// `rate` is empty or says of which time the amounts are, as " per hour".
    Captions(const std::vector<Curve>& curves, QString rate) : m_rate(std::move(rate)) {
        for (const auto& curve : curves) {
            m_devices.insert(curve.device);
            m_codes.insert(curve.obisCode);
            if (!m_units.contains(curve.unit)) {
                m_units.append(curve.unit);
            }
            m_codesOfUnit[curve.unit].insert(curve.obisCode);
        }
        requireTwoAxes();
    }

    int axisOf(const Curve& curve) const { return m_units.indexOf(curve.unit); }

    QString title(const Canvas& canvas) const {
        QStringList parts;
        if (m_codes.size() == 1) {
            parts.append(*m_codes.begin());
        }
        if (m_devices.size() == 1) {
            parts.append(QStringLiteral("device %1").arg(*m_devices.begin()));
        }
        const auto title = parts.join(QStringLiteral(" of "));
        const auto& unit = m_units.front();
        return canvas.ascii && axes() == 1 && !unit.isEmpty() ? withUnit(title, unit) : title;
    }

    /// The curve's name in the legend, which a single one does not need.
    QString nameOf(const Curve& curve) const {
        QStringList parts;
        if (m_devices.size() > 1) {
            parts.append(QStringLiteral("device %1").arg(curve.device));
        }
        if (m_codes.size() > 1) {
            parts.append(m_units.size() > 1 ? withUnit(curve.obisCode, curve.unit)
                                            : curve.obisCode);
        }
        return parts.join(QStringLiteral(", "));
    }

    QString axisLabel(int axis, const Canvas& canvas) const {
        const auto& unit = m_units.at(axis);
        if (canvas.ascii) {
            // The title, or the legend, says the rest.
            return axes() > 1 ? unit : QString();
        }
        const auto& codes = m_codesOfUnit.at(unit);
        if (codes.size() == 1) {
            return withUnit(*codes.begin(), unit);
        }
        return unit.isEmpty() ? QStringLiteral("Value") : unit + m_rate;
    }

    int axes() const { return m_units.size(); }

private:
    QString withUnit(const QString& code, const QString& unit) const {
        return unit.isEmpty() ? code + m_rate : QStringLiteral("%1 (%2)").arg(code, unit + m_rate);
    }

    void requireTwoAxes() const {
        if (m_units.size() <= 2) {
            return;
        }
        QStringList units;
        for (const auto& [unit, codes] : m_codesOfUnit) {
            const QStringList names(codes.begin(), codes.end());
            units.append(QStringLiteral("%1 of %2")
                             .arg(unit.isEmpty() ? QStringLiteral("no unit") : unit,
                                  names.join(QLatin1Char(','))));
        }
        throw Failure(QStringLiteral("the values have %1 units (%2), and a picture has two axes: "
                                     "give --obis the codes of one or two units")
                          .arg(m_units.size())
                          .arg(units.join(QStringLiteral("; "))));
    }

    QString m_rate;
    std::set<int> m_devices;
    std::set<QString> m_codes;
    QStringList m_units;
    std::map<QString, std::set<QString>> m_codesOfUnit;
};

/// A register shows its course only if the axis leaves the rest out; what is near 0 is seen as
/// such.
bool beginsAtZero(const std::vector<Curve>& curves, const Captions& captions, int axis) {
    double least = std::numeric_limits<double>::max();
    double most = std::numeric_limits<double>::lowest();
    for (const auto& curve : curves) {
        if (captions.axisOf(curve) == axis) {
            for (const auto& point : curve.points) {
                least = std::min(least, point.value);
                most = std::max(most, point.value);
            }
        }
    }
    return least >= 0 && least <= most / 2;
}

QString pointLine(const Point& point, qint64 offset) {
    return QStringLiteral("%1 %2\n").arg(point.secs + offset).arg(text(point.value));
}

/// The lines of a curve; and the points that have no neighbours, of which no line can be seen.
void addCurve(Picture& picture, const Curve& curve, int axis, const QString& name, int lineType) {
    Drawing lines{.name = name, .data = {}, .style = {}, .axis = axis};
    Drawing points{.name = {}, .data = {}, .style = {}, .axis = axis};
    for (const auto& stretch : stretches(curve.points)) {
        for (const auto& point : stretch) {
            lines.data += pointLine(point, picture.time.offsetSecs);
        }
        // gnuplot draws no line across an empty one.
        lines.data += QLatin1Char('\n');
        if (stretch.size() == 1) {
            points.data += pointLine(stretch.front(), picture.time.offsetSecs);
        }
    }
    lines.style = QStringLiteral("using 1:2 with steps linetype %1 linewidth 2").arg(lineType);
    points.style =
        QStringLiteral("using 1:2 with points linetype %1 pointtype 7 pointsize 0.5").arg(lineType);
    picture.drawings.push_back(lines);
    if (!points.data.isEmpty()) {
        picture.drawings.push_back(points);
    }
}

std::vector<Curve> countersOf(const std::vector<Consumption>& all) {
    std::vector<Curve> counters;
    std::ranges::transform(all, std::back_inserter(counters), &Consumption::counter);
    return counters;
}

double mostOf(const std::vector<Consumption>& all, const Captions& captions, int axis) {
    double most = 0;
    for (const auto& each : all) {
        if (captions.axisOf(each.counter) == axis) {
            for (const auto& portion : each.portions) {
                most = std::max(most, portion.amount);
            }
        }
    }
    return most == 0 ? 1 : most;
}

/// Which part of each portion's time the bars of one register take: several stand side by side.
struct Place {
    double begin = 0;
    double width = 0;
};

Place placeOf(std::size_t index, std::size_t count) {
    constexpr double around = 0.1;
    const double width = (1 - 2 * around) / static_cast<double>(count);
    return {.begin = around + width * static_cast<double>(index), .width = width};
}

/// The bars of the portions of one kind; of `height`, or as high as the portion's amount.
QString barLines(const std::vector<Portion>& portions, Portion::Kind kind, const Place& place,
                 qint64 offset, std::optional<double> height) {
    QString lines;
    for (const auto& portion : portions) {
        if (portion.kind != kind) {
            continue;
        }
        const auto length = static_cast<double>(portion.end - portion.begin);
        const auto begin = static_cast<double>(portion.begin + offset) + length * place.begin;
        const auto end = begin + length * place.width;
        const auto top = text(height.value_or(portion.amount));
        lines += QStringLiteral("%1 %2 %3 %4 0 %2\n")
                     .arg(text((begin + end) / 2), top, text(begin), text(end));
    }
    return lines;
}

/// Adds what has data; the names of what is not known are in the legend once.
void addBars(Picture& picture, const QString& name, const QString& data, const QString& look,
             int axis) {
    if (data.isEmpty()) {
        return;
    }
    const bool named = std::ranges::any_of(
        picture.drawings, [&](const Drawing& drawing) { return drawing.name == name; });
    picture.drawings.push_back(
        {.name = named ? QString() : name,
         .data = data,
         .style = QStringLiteral("using 1:2:3:4:5:6 with boxxyerror ") + look,
         .axis = axis});
}

} // namespace

QString nameOf(const Curve& curve) {
    return QStringLiteral("%1 of device %2").arg(curve.obisCode).arg(curve.device);
}

Picture curvePicture(const std::vector<Curve>& curves, const Canvas& canvas) {
    const Captions captions(curves, {});
    const auto& first =
        std::ranges::min(curves, {}, [](const Curve& curve) { return curve.points.front().secs; });
    const auto& last =
        std::ranges::max(curves, {}, [](const Curve& curve) { return curve.points.back().secs; });
    Picture picture{.title = captions.title(canvas),
                    .time = timeAxis(first.points.front().secs, last.points.back().secs,
                                     canvas.local, canvas.tics),
                    .values = {},
                    .drawings = {}};
    for (int axis = 0; axis < captions.axes(); ++axis) {
        picture.values.push_back(
            {captions.axisLabel(axis, canvas), beginsAtZero(curves, captions, axis)});
    }
    int lineType = 1;
    for (const auto& curve : curves) {
        addCurve(picture, curve, captions.axisOf(curve), captions.nameOf(curve), lineType++);
    }
    return picture;
}

Picture consumptionPicture(const std::vector<Consumption>& all, Per per, const Canvas& canvas) {
    using Kind = Portion::Kind;
    const Captions captions(countersOf(all), per == Per::Hour ? QStringLiteral(" per hour")
                                                              : QStringLiteral(" per day"));
    const auto& first = std::ranges::min(
        all, {}, [](const Consumption& each) { return each.portions.front().begin; });
    const auto& last =
        std::ranges::max(all, {}, [](const Consumption& each) { return each.portions.back().end; });
    Picture picture{.title = captions.title(canvas),
                    .time = timeAxis(first.portions.front().begin, last.portions.back().end,
                                     canvas.local, canvas.tics),
                    .values = {},
                    .drawings = {}};
    for (int axis = 0; axis < captions.axes(); ++axis) {
        picture.values.push_back({captions.axisLabel(axis, canvas), true});
    }
    const auto addKind = [&](Kind kind, const QString& name, const QString& look) {
        for (std::size_t i = 0; i < all.size(); ++i) {
            const auto& counter = all[i].counter;
            const int axis = captions.axisOf(counter);
            const bool known = kind == Kind::Known;
            addBars(picture, known ? captions.nameOf(counter) : name,
                    barLines(all[i].portions, kind, placeOf(i, all.size()), picture.time.offsetSecs,
                             known ? std::nullopt : std::optional(mostOf(all, captions, axis))),
                    known ? look.arg(i + 1) : look, axis);
        }
    };
    addKind(Kind::Known, {}, QStringLiteral("linetype %1 fillstyle solid 0.7 noborder"));
    addKind(Kind::NoReadings, QStringLiteral("no readings"),
            canvas.ascii ? QStringLiteral("linetype 6 fillstyle empty")
                         : QStringLiteral("linecolor rgb 'gray' fillstyle solid 0.4 noborder"));
    addKind(Kind::WentBack, QStringLiteral("register went back"),
            canvas.ascii ? QStringLiteral("linetype 7 fillstyle empty")
                         : QStringLiteral("linecolor rgb 'red' fillstyle pattern 4"));
    return picture;
}

} // namespace host
