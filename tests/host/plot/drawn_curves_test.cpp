#include "host/plot/drawn_curves.h"

#include "host/failure.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using host::Curve;
using host::Per;
using host::Point;
using host::Portion;
using namespace test_support::literals;

Curve curve(int device, const QString& code, const QString& unit,
            std::vector<Point> points = {{0, 1}, {60, 2}}) {
    return {device, code, unit, std::move(points)};
}

host::Picture draw(const std::vector<Curve>& curves) {
    return host::curvePicture(curves, {.tics = 10});
}

TEST(CurvePicture, CallsASingleCurveByItsTitle) {
    const auto picture = draw({curve(7, "1-0:1.7.0"_q, "kW"_q)});
    EXPECT_EQ(picture.title, "1-0:1.7.0 of device 7"_q);
    ASSERT_EQ(picture.values.size(), 1U);
    EXPECT_EQ(picture.values[0].label, "1-0:1.7.0 (kW)"_q);
    ASSERT_EQ(picture.drawings.size(), 1U);
    EXPECT_EQ(picture.drawings[0].name, QString());
}

TEST(CurvePicture, CallsCurvesByWhatTellsThemApart) {
    auto picture = draw({curve(7, "a"_q, "kW"_q), curve(8, "a"_q, "kW"_q)});
    EXPECT_EQ(picture.title, "a"_q);
    EXPECT_EQ(picture.drawings[1].name, "device 8"_q);
    picture = draw({curve(7, "a"_q, "kW"_q), curve(7, "b"_q, "kW"_q)});
    EXPECT_EQ(picture.title, "device 7"_q);
    EXPECT_EQ(picture.drawings[1].name, "b"_q);
    picture = draw({curve(7, "a"_q, "kW"_q), curve(8, "b"_q, "V"_q)});
    EXPECT_EQ(picture.drawings[1].name, "device 8, b (V)"_q);
}

TEST(CurvePicture, GivesEachUnitAnAxis) {
    const auto picture =
        draw({curve(7, "a"_q, "kW"_q), curve(7, "b"_q, {}), curve(7, "c"_q, "kW"_q)});
    ASSERT_EQ(picture.values.size(), 2U);
    EXPECT_EQ(picture.values[0].label, "kW"_q);
    EXPECT_EQ(picture.values[1].label, "b"_q);
    EXPECT_EQ(picture.drawings[1].axis, 1);
    EXPECT_EQ(picture.drawings[2].axis, 0);
}

TEST(CurvePicture, HasTheUnitInItsTitleWhereTheAxisHasNoRoom) {
    const auto power = curve(7, "a"_q, "kW"_q);
    auto picture = host::curvePicture({power}, {.tics = 4, .ascii = true});
    EXPECT_EQ(picture.title, "a of device 7 (kW)"_q);
    EXPECT_EQ(picture.values[0].label, QString());
    picture = host::curvePicture({power, curve(7, "b"_q, "V"_q)}, {.tics = 4, .ascii = true});
    EXPECT_EQ(picture.title, "device 7"_q);
    EXPECT_EQ(picture.values[1].label, "V"_q);
}

TEST(CurvePicture, RefusesAThirdUnit) {
    EXPECT_THROW(draw({curve(7, "a"_q, "kW"_q), curve(7, "b"_q, "V"_q), curve(7, "c"_q, {})}),
                 host::Failure);
}

TEST(CurvePicture, BeginsAtZeroUnlessTheCurveIsFarAbove) {
    const auto fromZero = [](std::vector<Point> points) {
        return draw({curve(7, "a"_q, {}, std::move(points))}).values[0].fromZero;
    };
    EXPECT_TRUE(fromZero({{0, 1}, {1, 2}}));
    EXPECT_FALSE(fromZero({{0, 3432.8}, {1, 3432.9}}));
    EXPECT_FALSE(fromZero({{0, -1}, {1, 2}}));
}

TEST(CurvePicture, LeavesGapsAndMarksWhatStandsAlone) {
    const auto picture = draw(
        {curve(7, "a"_q, {}, {{0, 1}, {10, 1}, {20, 1}, {100, 1}, {200, 1}, {210, 1}, {220, 1}})});
    ASSERT_EQ(picture.drawings.size(), 2U);
    EXPECT_EQ(picture.drawings[0].data, "0 1\n10 1\n20 1\n\n100 1\n\n200 1\n210 1\n220 1\n\n"_q);
    EXPECT_EQ(picture.drawings[1].data, "100 1\n"_q);
}

TEST(ConsumptionPicture, HasABarForEachPortionAndOnesForWhatIsNotKnown) {
    using Kind = Portion::Kind;
    const auto picture = host::consumptionPicture({{curve(7, "1-0:1.8.0"_q, "kWh"_q),
                                                    {{0, 3600, Kind::Known, 2.5},
                                                     {3600, 7200, Kind::NoReadings, 0},
                                                     {7200, 10800, Kind::WentBack, 0},
                                                     {10800, 14400, Kind::NoReadings, 0}}}},
                                                  Per::Hour, {.tics = 10});
    EXPECT_EQ(picture.values[0].label, "1-0:1.8.0 (kWh per hour)"_q);
    EXPECT_EQ(picture.time.begin, 0);
    EXPECT_EQ(picture.time.end, 14400);
    ASSERT_EQ(picture.drawings.size(), 3U);
    EXPECT_EQ(picture.drawings[0].data, "1800 2.5 360 3240 0 2.5\n"_q);
    EXPECT_EQ(picture.drawings[1].name, "no readings"_q);
    EXPECT_EQ(picture.drawings[1].data,
              "5400 2.5 3960 6840 0 2.5\n12600 2.5 11160 14040 0 2.5\n"_q);
    EXPECT_EQ(picture.drawings[2].name, "register went back"_q);
}

TEST(ConsumptionPicture, PutsTheBarsOfSeveralRegistersSideBySide) {
    const std::vector<Portion> unknown{{0, 3600, Portion::Kind::NoReadings, 0}};
    const auto picture = host::consumptionPicture(
        {{curve(7, "a"_q, "kWh"_q), unknown}, {curve(8, "a"_q, "kWh"_q), unknown}}, Per::Day,
        {.tics = 10});
    ASSERT_EQ(picture.drawings.size(), 2U);
    EXPECT_EQ(picture.drawings[0].data, "1080 1 360 1800 0 1\n"_q);
    EXPECT_EQ(picture.drawings[1].data, "2520 1 1800 3240 0 1\n"_q);
    // One entry in the legend is enough.
    EXPECT_EQ(picture.drawings[1].name, QString());
}

} // namespace
