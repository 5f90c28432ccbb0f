#include "host/bench/measurement.h"

#include <gtest/gtest.h>

namespace {

host::Measurement measurement(std::vector<double> msecs, qint64 records) {
    return {{}, {}, std::move(msecs), records};
}

TEST(Measurement, HasTheRateOfTheTimeInCalls) {
    EXPECT_DOUBLE_EQ(measurement({100, 400}, 10).recordRate(), 20);
    EXPECT_DOUBLE_EQ(measurement({}, 0).recordRate(), 0);
}

TEST(Measurement, HasPercentilesByNearestRank) {
    const auto five = measurement({50, 15, 40, 20, 35}, 5);
    EXPECT_DOUBLE_EQ(five.percentileMsecs(0.5), 35);
    EXPECT_DOUBLE_EQ(five.percentileMsecs(0.99), 50);
    EXPECT_DOUBLE_EQ(five.percentileMsecs(0.2), 15);
    EXPECT_DOUBLE_EQ(measurement({7}, 1).percentileMsecs(0.5), 7);
    EXPECT_DOUBLE_EQ(measurement({}, 0).percentileMsecs(0.5), 0);
}

} // namespace
