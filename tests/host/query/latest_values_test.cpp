#include "host/query/latest_values.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

model::dev_value value(const QString& code, int number) {
    model::dev_value result;
    result.obis_code = code;
    result.value = number;
    return result;
}

TEST(LatestOfEachCode, IsTheFirstOfEachInTheOrderOfTheCodes) {
    const auto latest = host::latestOfEachCode(
        {value("b"_q, 4), value("a"_q, 3), value("b"_q, 2), value("a"_q, 1)});
    ASSERT_EQ(latest.size(), 2U);
    EXPECT_EQ(latest[0].obis_code, "a"_q);
    EXPECT_EQ(latest[0].value, 3);
    EXPECT_EQ(latest[1].value, 4);
}

} // namespace
