#include "host/plot/time_axis.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/time_zone.h"

#include <QDateTime>
#include <gtest/gtest.h>

namespace {

using host::Per;
using namespace test_support::literals;

qint64 secs(const QString& time) {
    return QDateTime::fromString(time, Qt::ISODate).toSecsSinceEpoch();
}

host::TimeAxis axis(const QString& begin, const QString& end, bool local = false) {
    return host::timeAxis(secs(begin), secs(end), local, 10);
}

TEST(TimeAxis, NamesTheZoneAndTheDay) {
    EXPECT_EQ(axis("2019-03-24T14:05:21Z"_q, "2019-03-24T14:10:01Z"_q).label,
              "Time (UTC), 2019-03-24"_q);
    EXPECT_EQ(axis("2019-03-24T00:00:00Z"_q, "2019-03-25T00:00:00Z"_q).label,
              "Time (UTC), 2019-03-24"_q);
    EXPECT_EQ(axis("2019-03-24T14:05:21Z"_q, "2019-03-26T14:10:01Z"_q).label, "Time (UTC)"_q);
}

TEST(TimeAxis, NamesThisMachinesZoneAndItsDistanceAtTheEnd) {
    const test_support::local_time_zone zone("Europe/Berlin");
    const auto local = axis("2026-03-28T12:00:00Z"_q, "2026-03-29T12:00:00Z"_q, true);
    EXPECT_EQ(local.label, "Time (Europe/Berlin, UTC+02:00)"_q);
    EXPECT_EQ(local.offsetSecs, 7200);
}

TEST(TimeAxis, NamesTheDayOfTheZone) {
    const test_support::local_time_zone zone("America/New_York");
    EXPECT_EQ(axis("2026-01-02T01:00:00Z"_q, "2026-01-02T04:00:00Z"_q, true).label,
              "Time (America/New_York, UTC-05:00), 2026-01-01"_q);
}

TEST(TimeAxis, HasTicsThatPeopleCount) {
    const auto minutes = axis("2019-03-24T14:05:21Z"_q, "2019-03-24T14:10:01Z"_q);
    EXPECT_EQ(minutes.ticSecs, 30);
    EXPECT_EQ(minutes.format, "'%H:%M:%S'"_q);
    const auto days = axis("2026-01-01T00:00:00Z"_q, "2026-01-03T00:00:00Z"_q);
    EXPECT_EQ(days.ticSecs, 6 * 3600);
    EXPECT_EQ(days.format, "\"%H:%M\\n%Y-%m-%d\""_q);
    const auto weeks = axis("2026-01-01T00:00:00Z"_q, "2026-03-03T00:00:00Z"_q);
    EXPECT_EQ(weeks.ticSecs, 7 * 86'400);
    EXPECT_EQ(weeks.format, "'%Y-%m-%d'"_q);
    EXPECT_EQ(axis("1970-01-01T00:00:00Z"_q, "2026-03-03T00:00:00Z"_q).ticSecs, 364 * 86'400);
}

TEST(TimeAxis, HasATicAtTheBeginningOfAWeek) {
    EXPECT_EQ(axis("2026-01-01T10:00:00Z"_q, "2026-03-03T00:00:00Z"_q).firstTic,
              secs("2025-12-29T00:00:00Z"_q));
}

TEST(TimeAxis, HasALengthAlsoForASingleInstant) {
    const auto instant = axis("2026-01-01T12:00:00Z"_q, "2026-01-01T12:00:00Z"_q);
    EXPECT_EQ(instant.end - instant.begin, 120);
}

TEST(Boundaries, AreTheHoursAroundThePeriod) {
    const auto found = host::boundaries(Per::Hour, secs("2026-01-01T10:30:00Z"_q),
                                        secs("2026-01-01T12:00:01Z"_q), false);
    EXPECT_EQ(found, (std::vector{secs("2026-01-01T10:00:00Z"_q), secs("2026-01-01T11:00:00Z"_q),
                                  secs("2026-01-01T12:00:00Z"_q), secs("2026-01-01T13:00:00Z"_q)}));
}

TEST(Boundaries, AreTheEndsOfThePeriodThatAreOnes) {
    const auto begin = secs("2026-01-01T10:00:00Z"_q);
    EXPECT_EQ(host::boundaries(Per::Hour, begin, begin + 3600, false),
              (std::vector{begin, begin + 3600}));
}

TEST(Boundaries, AreTheDaysOfTheZoneAlsoWhereTheyAreNotOf24Hours) {
    const test_support::local_time_zone zone("Europe/Berlin");
    EXPECT_EQ(host::boundaries(Per::Day, secs("2026-03-28T12:00:00Z"_q),
                               secs("2026-03-29T22:00:00Z"_q), true),
              (std::vector{secs("2026-03-27T23:00:00Z"_q), secs("2026-03-28T23:00:00Z"_q),
                           secs("2026-03-29T22:00:00Z"_q)}));
}

TEST(Boundaries, AreTheHoursOfAZoneThatIsNotAWholeNumberOfThemAway) {
    const test_support::local_time_zone zone("Asia/Kolkata");
    EXPECT_EQ(host::boundaries(Per::Hour, secs("2026-01-01T10:00:00Z"_q),
                               secs("2026-01-01T10:30:00Z"_q), true),
              (std::vector{secs("2026-01-01T09:30:00Z"_q), secs("2026-01-01T10:30:00Z"_q)}));
}

} // namespace
