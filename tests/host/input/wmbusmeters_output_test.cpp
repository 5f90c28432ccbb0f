#include "host/input/wmbusmeters_output.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QJsonDocument>
#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

QJsonObject printed() {
    // As wmbusmeters 2.0.0 prints it.
    return QJsonDocument::fromJson(
               R"({"_":"telegram","media":"water","meter":"evo868","name":"Cellar","id":"22332233",)"
               R"("total_m3":8.683,"current_status":"OK","timestamp":"2019-02-09T08:05:11Z",)"
               R"("device":"rtlwmbus[]","rssi_dbm":-71})")
        .object();
}

QString rejectionOf(const QJsonObject& fields) {
    try {
        host::parseWmbusmeters(fields, 1);
    } catch (const host::Rejection& rejection) {
        return rejection.reason;
    }
    return "accepted"_q;
}

TEST(WmbusmetersOutput, IsATelegramOfItsMeter) {
    ASSERT_TRUE(host::isWmbusmeters(printed()));
    const auto telegram = host::parseWmbusmeters(printed(), 7);
    EXPECT_EQ(telegram.lineNumber, 7);
    EXPECT_EQ(telegram.deviceNumber, 22332233);
    EXPECT_EQ(telegram.meterMake, "evo868"_q);
    EXPECT_EQ(telegram.medium, "water"_q);
    EXPECT_EQ(telegram.timeSecs, 1'549'699'511);
    EXPECT_TRUE(telegram.payload.isEmpty());
}

TEST(WmbusmetersOutput, KeepsTheMetersReadingsApartFromTheReception) {
    const auto telegram = host::parseWmbusmeters(printed(), 1);
    EXPECT_EQ(telegram.decoded.keys(),
              (QStringList{"current_status"_q, "id"_q, "media"_q, "meter"_q, "total_m3"_q}));
    EXPECT_EQ(
        telegram.reception,
        (QJsonObject{{"name"_q, "Cellar"_q}, {"device"_q, "rtlwmbus[]"_q}, {"rssi_dbm"_q, -71}}));
}

TEST(WmbusmetersOutput, MayHaveNoTime) {
    auto fields = printed();
    fields.remove("timestamp"_q);
    EXPECT_EQ(host::parseWmbusmeters(fields, 1).timeSecs, std::nullopt);
}

TEST(WmbusmetersOutput, IsRejectedWithoutAMeterOrWithAStrangeTime) {
    auto fields = printed();
    fields["timestamp"_q] = "yesterday"_q;
    EXPECT_EQ(rejectionOf(fields), "the \"timestamp\" is no time as 2026-11-22T10:00:00Z"_q);
    fields = printed();
    fields["id"_q] = "2233223a"_q;
    EXPECT_EQ(rejectionOf(fields), "the meter's id \"2233223a\" is not eight decimal digits"_q);
}

TEST(WmbusmetersOutput, IsToldFromOtherObjects) {
    EXPECT_FALSE(host::isWmbusmeters({{"id"_q, "1"_q}, {"meter"_q, "x"_q}}));
}

TEST(LoggedTelegram, IsTheBytesBetweenTheBars) {
    EXPECT_EQ(host::parseLoggedTelegram("telegram=|1944_0A0b|+12"), QByteArray("\x19\x44\x0a\x0b"));
}

TEST(LoggedTelegram, IsNothingElse) {
    for (const char* line : {"telegram=||+0", "telegram=|12 34|", " telegram=|12|", "telegram=12",
                             R"({"telegram":"12"})"}) {
        EXPECT_EQ(host::parseLoggedTelegram(line), std::nullopt) << line;
    }
}

} // namespace
