#include "host/records/record_text.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;
using host::readingsText;

TEST(DeviceText, HasEightDigits) {
    EXPECT_EQ(host::deviceText(86426), "00086426"_q);
}

TEST(TimeText, IsUtc) {
    const auto east = QDateTime::fromSecsSinceEpoch(1'800'000'000, Qt::OffsetFromUTC, 3600);
    EXPECT_EQ(host::timeText(east), "2027-01-15 08:00:00"_q);
}

TEST(ReadingsText, ShowsAReadingWithItsUnit) {
    EXPECT_EQ(readingsText({{"total_m3"_q, 21.93}}), "total: 21.93 m³"_q);
}

TEST(ReadingsText, ShowsTotalsBeforeCurrentValuesBeforeTheRest) {
    EXPECT_EQ(readingsText({{"a_v"_q, 230}, {"current_power_kw"_q, 1.5}, {"total_kwh"_q, 7}}),
              "total: 7 kWh, current power: 1.5 kW"_q);
}

TEST(ReadingsText, ShowsWhatIsNotZeroFirst) {
    EXPECT_EQ(readingsText({{"total_a_kwh"_q, 0}, {"total_b_kwh"_q, 3}, {"total_c_kwh"_q, 4}}),
              "total b: 3 kWh, total c: 4 kWh"_q);
}

TEST(ReadingsText, ShowsNoMoreThanTwo) {
    EXPECT_EQ(readingsText({{"a_c"_q, 1}, {"b_c"_q, 2}, {"c_c"_q, 3}}), "a: 1 °C, b: 2 °C"_q);
}

TEST(ReadingsText, PassesOverTextAndNullAndNumbersWithoutAUnit) {
    EXPECT_EQ(readingsText({{"status"_q, "OK"_q},
                            {"total_m3"_q, QJsonValue::Null},
                            {"date_h"_q, "12 h"_q},
                            {"number"_q, 3}}),
              QString());
}

} // namespace
