#include "host/plot/curve.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

model::dev_value value(qint64 secs, const QVariant& value, const QString& unit = {}) {
    model::dev_value result;
    result.timestamp = QDateTime::fromSecsSinceEpoch(secs, Qt::UTC);
    result.value = value;
    result.extended_data = QJsonDocument(QJsonObject{{"unit"_q, unit}});
    return result;
}

/// How many points each stretch has.
std::vector<std::size_t> parts(const std::vector<qint64>& times) {
    std::vector<host::Point> points;
    for (const auto secs : times) {
        points.push_back({secs, 0});
    }
    std::vector<std::size_t> sizes;
    for (const auto& stretch : host::stretches(points)) {
        sizes.push_back(stretch.size());
    }
    return sizes;
}

using Sizes = std::vector<std::size_t>;

TEST(Curve, HasTheNumbersOldestFirstAndLeavesTheRestOut) {
    const auto curve = host::makeCurve(
        7, "1-0:1.7.0"_q, {value(30, 0.5), value(20, "text"_q), value(10, 2), value(5, true)});
    ASSERT_EQ(curve.points.size(), 2U);
    EXPECT_EQ(curve.points[0].secs, 10);
    EXPECT_EQ(curve.points[0].value, 2);
    EXPECT_EQ(curve.points[1].secs, 30);
    EXPECT_EQ(curve.points[1].value, 0.5);
}

TEST(Curve, HasTheNewestUnitThatThereIs) {
    EXPECT_EQ(
        host::makeCurve(7, "c"_q, {value(3, 1), value(2, 1, "kW"_q), value(1, 1, "W"_q)}).unit,
        "kW"_q);
    EXPECT_EQ(host::makeCurve(7, "c"_q, {value(3, 1)}).unit, QString());
}

TEST(CurveStretches, EndWhereNothingCameForMoreThanThreeTimesTheUsualDistance) {
    EXPECT_EQ(parts({0, 10, 20, 50, 60, 70}), Sizes({6}));
    EXPECT_EQ(parts({0, 10, 20, 51, 61, 71}), Sizes({3, 3}));
    EXPECT_EQ(parts({0, 10, 20, 100, 200, 210, 220}), Sizes({3, 1, 3}));
}

TEST(CurveStretches, AreNotEndedByValuesOfTheSameSecond) {
    EXPECT_EQ(parts({0, 0, 0, 0, 10, 10, 10, 20}), Sizes({8}));
    EXPECT_EQ(parts({5, 5}), Sizes({2}));
}

TEST(CurveStretches, AreOfAllPoints) {
    EXPECT_EQ(parts({}), Sizes());
    EXPECT_EQ(parts({1}), Sizes({1}));
    EXPECT_EQ(parts({1, 1000}), Sizes({2}));
}

} // namespace
