#include "host/ingest/uplink.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

host::Telegram telegram() {
    host::Telegram telegram;
    telegram.deviceNumber = 22332233;
    telegram.payload = QByteArray::fromHex("19440a0b");
    telegram.meterMake = "evo868"_q;
    telegram.medium = "water"_q;
    telegram.decoded = {{"total_m3"_q, 8.683}, {"status"_q, "LEAK BURST"_q}};
    telegram.timeSecs = 1'549'699'511;
    return telegram;
}

const QDateTime now = QDateTime::fromSecsSinceEpoch(1'800'000'000, Qt::UTC);
const QDateTime expiry = now.addSecs(60);

/// Stores hold these: they must never change.
TEST(UniqueNumber, IsTheOneThatStoresHold) {
    EXPECT_EQ(host::uniqueNumber(telegram()), 15257888606550849243ULL);
    auto other = telegram();
    other.payload.clear();
    EXPECT_EQ(host::uniqueNumber(other), 12315871870872621491ULL);
    other.timeSecs.reset();
    EXPECT_EQ(host::uniqueNumber(other), 5690097132252924947ULL);
}

TEST(UniqueNumber, IsOfDeviceTimeAndPayload) {
    const auto changed = [](auto change) {
        auto other = telegram();
        change(other);
        return host::uniqueNumber(other);
    };
    const auto number = host::uniqueNumber(telegram());
    EXPECT_NE(changed([](auto& other) { ++other.deviceNumber; }), number);
    EXPECT_NE(changed([](auto& other) { ++*other.timeSecs; }), number);
    EXPECT_NE(changed([](auto& other) { other.timeSecs.reset(); }), number);
    EXPECT_NE(changed([](auto& other) { other.payload[0] = 'x'; }), number);
}

TEST(UniqueNumber, IsNotOfTheReadingsWhereThePayloadIsKnown) {
    auto other = telegram();
    other.decoded.insert("total_m3"_q, 9);
    other.reception.insert("rssi_dbm"_q, -3);
    EXPECT_EQ(host::uniqueNumber(other), host::uniqueNumber(telegram()));
    other.payload.clear();
    auto another = other;
    another.decoded.insert("total_m3"_q, 10);
    EXPECT_NE(host::uniqueNumber(other), host::uniqueNumber(another));
}

TEST(Uplink, HasTheTelegramsTime) {
    const auto uplink = host::buildUplink(telegram(), now, expiry);
    const auto time = QDateTime::fromSecsSinceEpoch(1'549'699'511, Qt::UTC);
    EXPECT_FALSE(uplink.timeAssigned);
    EXPECT_EQ(uplink.message.timestamp, time);
    EXPECT_EQ(uplink.message.time_detected, time);
    EXPECT_EQ(uplink.values.front().timestamp, time);
    EXPECT_EQ(uplink.events.front().timestamp, time);
    EXPECT_EQ(uplink.message.ttl, expiry);
    EXPECT_EQ(uplink.values.front().ttl, expiry);
    EXPECT_EQ(uplink.events.front().ttl, expiry);
}

TEST(Uplink, OfATelegramWithoutATimeIsOfNowUntilItIsGivenAnother) {
    auto timeless = telegram();
    timeless.timeSecs.reset();
    auto uplink = host::buildUplink(timeless, now, expiry);
    EXPECT_TRUE(uplink.timeAssigned);
    EXPECT_EQ(uplink.message.timestamp, now);
    host::setTime(uplink, expiry);
    EXPECT_EQ(uplink.message.timestamp, expiry);
    EXPECT_EQ(uplink.message.time_detected, expiry);
    EXPECT_EQ(uplink.values.front().timestamp, expiry);
    EXPECT_EQ(uplink.events.back().timestamp, expiry);
}

TEST(Uplink, IsNamedByItsValuesAndEventsAsTheStoreNamesIt) {
    const auto uplink = host::buildUplink(telegram(), now, expiry);
    const auto id = QString::number(uplink.message.unique_id, 16);
    EXPECT_EQ(uplink.values.front().message_id, id);
    EXPECT_EQ(uplink.events.front().message_id, id);
}

TEST(Uplink, KeepsWhatIsSaidOfTheReception) {
    auto received = telegram();
    received.reception = {{"rssi_dbm"_q, -71}, {"name"_q, "Cellar"_q}};
    const auto uplink = host::buildUplink(received, now, expiry);
    EXPECT_EQ(uplink.message.rssi, -71);
    EXPECT_EQ(uplink.message.extended_data.object(), received.reception);
    EXPECT_EQ(uplink.message.protocol, "wM-Bus"_q);
    received.payload.clear();
    EXPECT_EQ(host::buildUplink(received, now, expiry).message.protocol, QString());
}

} // namespace
