#include "host/records/value_builder.h"

#include "host/records/demo_mark.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

const auto start = QDateTime::fromSecsSinceEpoch(1'800'000'000, Qt::UTC);

model::dev_value build() {
    const host::MeterReading reading{4, 1'553'436'321, "1-0:1.8.1"_q, 3432.827, "kWh"_q};
    return host::buildValues({reading}, 31'650'618, start).front();
}

TEST(ValueBuilder, TakesTheReadingsOwnMembers) {
    const auto value = build();
    EXPECT_EQ(value.modem_id, 31'650'618);
    EXPECT_EQ(value.timestamp, QDateTime::fromSecsSinceEpoch(1'553'436'321, Qt::UTC));
    EXPECT_EQ(value.obis_code, "1-0:1.8.1"_q);
    EXPECT_EQ(value.value, QVariant(3432.827));
    EXPECT_EQ(value.message_id, "1553436321"_q);
}

TEST(ValueBuilder, KeepsUnitAndLineInTheExtendedData) {
    const auto extended = build().extended_data.object();
    EXPECT_EQ(extended.value("unit"_q), QJsonValue("kWh"_q));
    EXPECT_EQ(extended.value("line"_q), QJsonValue(4));
}

TEST(ValueBuilder, MarksTheValueAsTheDemos) {
    EXPECT_EQ(build().tag, host::demoSource());
    EXPECT_TRUE(host::isDemos(build()));
}

TEST(ValueBuilder, LetsTheValueExpireTwelveHoursAfterTheStart) {
    EXPECT_EQ(build().ttl, start.addSecs(43'200));
}

} // namespace
