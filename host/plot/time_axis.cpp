#include "host/plot/time_axis.h"

#include <QDateTime>
#include <QTimeZone>

#include <algorithm>
#include <array>

namespace host {

namespace {

constexpr qint64 minute = 60;
constexpr qint64 hour = 60 * minute;
constexpr qint64 day = 24 * hour;

constexpr std::array<qint64, 21> ticLengths{
    1,          2,           5,           10,      30,       minute,   2 * minute,
    5 * minute, 10 * minute, 30 * minute, hour,    2 * hour, 3 * hour, 6 * hour,
    12 * hour,  day,         2 * day,     7 * day, 14 * day, 28 * day, 91 * day};
constexpr qint64 longestTic = 364 * day;
// Where weeks begin.
constexpr qint64 aMonday = 4 * day;

QDateTime timeOf(qint64 secs, bool local) {
    return QDateTime::fromSecsSinceEpoch(secs, local ? Qt::LocalTime : Qt::UTC);
}

qint64 startOfDay(const QDate& date, bool local) {
    return date.startOfDay(local ? Qt::LocalTime : Qt::UTC).toSecsSinceEpoch();
}

qint64 startOf(Per per, qint64 secs, bool local) {
    const auto time = timeOf(secs, local);
    if (per == Per::Day) {
        return startOfDay(time.date(), local);
    }
    // An hour that summer time repeats has two beginnings of the same name.
    const auto onTheClock = secs + time.offsetFromUtc();
    return secs - (onTheClock % hour + hour) % hour;
}

qint64 next(Per per, qint64 start, bool local) {
    return per == Per::Hour ? start + hour
                            : startOfDay(timeOf(start, local).date().addDays(1), local);
}

QString zoneName(int offsetSecs, bool local) {
    if (!local) {
        return QStringLiteral("UTC");
    }
    const auto distance = QTime(0, 0).addSecs(std::abs(offsetSecs));
    return QStringLiteral("%1, UTC%2%3")
        .arg(QString::fromUtf8(QTimeZone::systemTimeZoneId()),
             offsetSecs < 0 ? QStringLiteral("-") : QStringLiteral("+"),
             distance.toString(QStringLiteral("HH:mm")));
}

QString ticFormat(qint64 ticSecs, bool oneDay) {
    if (ticSecs >= day) {
        return QStringLiteral("'%Y-%m-%d'");
    }
    const auto time = ticSecs < minute ? QStringLiteral("%H:%M:%S") : QStringLiteral("%H:%M");
    return oneDay ? QStringLiteral("'%1'").arg(time)
                  : QStringLiteral("\"%1\\n%Y-%m-%d\"").arg(time);
}

} // namespace

TimeAxis timeAxis(qint64 begin, qint64 end, bool local, int tics) {
    if (begin == end) {
        begin -= minute;
        end += minute;
    }
    const auto offset = timeOf(end, local).offsetFromUtc();
    const auto dateOf = [&](qint64 secs) {
        return timeOf(secs + offset, false).toString(QStringLiteral("yyyy-MM-dd"));
    };
    const auto* const length = std::ranges::lower_bound(ticLengths, (end - begin) / tics);
    const auto ticSecs = length == ticLengths.end() ? longestTic : *length;
    // Midnight at the end is still the same day.
    const bool oneDay = dateOf(begin) == dateOf(end - 1);
    return {.label = QStringLiteral("Time (%1)").arg(zoneName(offset, local)) +
                     (oneDay ? QStringLiteral(", ") + dateOf(begin) : QString()),
            .format = ticFormat(ticSecs, oneDay),
            .begin = begin,
            .end = end,
            .offsetSecs = offset,
            .ticSecs = ticSecs,
            .firstTic = aMonday + (begin + offset - aMonday) / ticSecs * ticSecs};
}

std::vector<qint64> boundaries(Per per, qint64 begin, qint64 end, bool local) {
    std::vector<qint64> starts{startOf(per, begin, local)};
    while (starts.back() < end) {
        starts.push_back(next(per, starts.back(), local));
    }
    return starts;
}

} // namespace host
