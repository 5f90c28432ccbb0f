#include "host/plot/consumption.h"

#include <gtest/gtest.h>

namespace {

using host::Point;
using host::Portion;
using Kind = Portion::Kind;

// In portions of 100 seconds.
std::vector<Portion> portions(const std::vector<Point>& readings, qint64 end) {
    std::vector<qint64> boundaries;
    for (qint64 secs = 0; secs <= end; secs += 100) {
        boundaries.push_back(secs);
    }
    return host::consumption(readings, boundaries);
}

std::vector<Kind> kinds(const std::vector<Portion>& portions) {
    std::vector<Kind> result;
    for (const auto& portion : portions) {
        result.push_back(portion.kind);
    }
    return result;
}

using Kinds = std::vector<Kind>;

TEST(Consumption, IsTheDifferenceBetweenTheReadingsAtTheEnds) {
    const auto found = portions({{0, 5}, {30, 7}, {100, 8}, {200, 8}}, 200);
    ASSERT_EQ(kinds(found), Kinds({Kind::Known, Kind::Known}));
    EXPECT_EQ(found[0].amount, 3);
    EXPECT_EQ(found[1].amount, 0);
    EXPECT_EQ(found[1].begin, 100);
    EXPECT_EQ(found[1].end, 200);
}

TEST(Consumption, IsInterpolatedWhereNoReadingWasTakenAtAnEnd) {
    const auto found = portions({{0, 0}, {80, 8}, {120, 16}, {190, 20}, {210, 22}}, 200);
    ASSERT_EQ(kinds(found), Kinds({Kind::Known, Kind::Known}));
    EXPECT_EQ(found[0].amount, 12);
    EXPECT_EQ(found[1].amount, 9);
}

TEST(Consumption, IsOfWholePortionsBetweenReadings) {
    const auto found = portions({{10, 0}, {100, 1}, {200, 2}, {290, 3}}, 300);
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(found[0].begin, 100);
}

TEST(Consumption, IsNotKnownWhereTheReadingsAroundAnEndAreTooFarApart) {
    EXPECT_EQ(kinds(portions({{0, 0}, {60, 1}, {210, 2}, {300, 3}}, 300)),
              Kinds({Kind::Known, Kind::Known, Kind::Known}));
    EXPECT_EQ(kinds(portions({{0, 0}, {60, 1}, {211, 2}, {300, 3}, {400, 4}}, 400)),
              Kinds({Kind::NoReadings, Kind::NoReadings, Kind::NoReadings, Kind::Known}));
}

TEST(Consumption, IsKnownAlsoWhereReadingsWithinThePortionAreMissing) {
    EXPECT_EQ(kinds(portions({{0, 0}, {100, 1}}, 100)), Kinds({Kind::Known}));
}

TEST(Consumption, IsNotKnownWhereTheRegisterWentBack) {
    EXPECT_EQ(kinds(portions({{0, 5}, {100, 6}, {140, 8}, {160, 0}, {200, 1}, {300, 2}}, 300)),
              Kinds({Kind::Known, Kind::WentBack, Kind::Known}));
}

TEST(Consumption, IsNotKnownOnBothSidesOfAnEndAcrossWhichTheRegisterWentBack) {
    EXPECT_EQ(kinds(portions({{0, 5}, {80, 6}, {120, 1}, {200, 2}, {300, 3}}, 300)),
              Kinds({Kind::WentBack, Kind::WentBack, Kind::Known}));
}

TEST(Consumption, GoesBackOnlyInThePortionThatEndsWithTheLowerReading) {
    EXPECT_EQ(kinds(portions({{0, 5}, {100, 6}, {200, 1}, {300, 2}}, 300)),
              Kinds({Kind::Known, Kind::WentBack, Kind::Known}));
}

TEST(Consumption, IsNoneWithoutReadings) {
    EXPECT_TRUE(portions({}, 200).empty());
    EXPECT_TRUE(portions({{50, 1}}, 200).empty());
}

} // namespace
