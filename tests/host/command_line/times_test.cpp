#include "host/command_line/times.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using host::parseTime;
using namespace test_support::literals;

QDateTime utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0) {
    return QDateTime({year, month, day}, {hour, minute, second}, Qt::UTC);
}

TEST(ParseTime, TakesItsZoneFromTheText) {
    EXPECT_EQ(parseTime("2026-11-22T10:00:00Z"_q), utc(2026, 11, 22, 10));
    EXPECT_EQ(parseTime("2026-11-22T10:00+01:00"_q), utc(2026, 11, 22, 9));
}

TEST(ParseTime, TakesTheMachinesZoneWhereTheTextNamesNone) {
    EXPECT_EQ(parseTime("2026-11-22T10:00:00"_q), QDateTime({2026, 11, 22}, {10, 0}));
}

TEST(ParseTime, TakesADateForItsFirstSecondOrItsLast) {
    EXPECT_EQ(parseTime("2026-11-22"_q), QDate(2026, 11, 22).startOfDay());
    EXPECT_EQ(parseTime("2026-11-22"_q, true), QDate(2026, 11, 22).endOfDay());
}

TEST(ParseTime, RefusesEverythingElse) {
    for (const auto& text : {""_q, "2026-13-01"_q, "2026-02-30"_q, "2026-11-22T25:00:00Z"_q,
                             "yesterday"_q, "22.11.2026"_q, "1700000000"_q}) {
        EXPECT_FALSE(parseTime(text)) << text.toStdString();
    }
}

class PeriodOptions : public testing::Test {
protected:
    PeriodOptions() { host::addPeriodOptions(app, period); }

    void parse(const std::string& arguments) { app.parse(arguments); }

    CLI::App app;
    host::Period period;
};

TEST_F(PeriodOptions, MeanAllTimeWhereTheyAreNotGiven) {
    parse("");
    EXPECT_EQ(period.begin, utc(1970, 1, 1));
    EXPECT_EQ(period.end, utc(9999, 12, 31, 23, 59, 59));
}

TEST_F(PeriodOptions, TakeBothEnds) {
    parse("--from 2026-11-22T10:00:00Z --to 2026-11-22T11:00:00Z");
    EXPECT_EQ(period.begin, utc(2026, 11, 22, 10));
    EXPECT_EQ(period.end, utc(2026, 11, 22, 11));
}

TEST_F(PeriodOptions, TakeADateAsTheEndForItsWholeDay) {
    parse("--to 2026-11-22");
    EXPECT_EQ(period.end, QDate(2026, 11, 22).endOfDay());
}

TEST_F(PeriodOptions, TakeALengthBackFromNow) {
    const std::map<std::string, qint64> lengths{
        {"90s", 90}, {"30m", 1800}, {"2h", 7200}, {"7d", 604'800}, {"1w", 604'800}};
    for (const auto& [text, secs] : lengths) {
        const auto before = QDateTime::currentDateTimeUtc();
        parse("--since " + text);
        EXPECT_GE(period.begin, before.addSecs(-secs)) << text;
        EXPECT_LE(period.begin, QDateTime::currentDateTimeUtc().addSecs(-secs)) << text;
    }
}

TEST_F(PeriodOptions, RefuseWhatIsNoTimeAndNoLength) {
    for (const auto* arguments :
         {"--from today", "--since 2", "--since 2y", "--since 2h --from 2026-11-22"}) {
        EXPECT_THROW(parse(arguments), CLI::ParseError) << arguments;
    }
}

TEST_F(PeriodOptions, SayWhatALengthLooksLike) {
    try {
        parse("--since 2026-11-22");
        ADD_FAILURE() << "was taken";
    } catch (const CLI::ParseError& error) {
        EXPECT_STREQ(error.what(),
                     "--since: \"2026-11-22\" is no length of time, as 90s, 30m, 2h, 7d or 4w");
    }
}

} // namespace
