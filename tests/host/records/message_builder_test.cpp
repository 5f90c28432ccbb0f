#include "host/records/message_builder.h"

#include "host/records/demo_mark.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QJsonObject>
#include <gtest/gtest.h>

#include <set>

namespace {

using namespace test_support::literals;
using host::buildMessages;
using host::Telegram;

const auto start = QDateTime::fromSecsSinceEpoch(1'800'000'000, Qt::UTC);

Telegram telegram() {
    Telegram telegram;
    telegram.lineNumber = 7;
    telegram.payload = "\x0a\xff"_qba;
    telegram.deviceNumber = 86426;
    telegram.meterId = "00086426"_q;
    telegram.meterMake = "amiplus"_q;
    telegram.medium = "electricity"_q;
    telegram.decoded = {{"total_kwh"_q, 0.1}};
    return telegram;
}

TEST(MessageBuilder, TakesTheTelegramsOwnMembers) {
    const auto message = buildMessages({telegram()}, start).front();
    EXPECT_EQ(message.payload, "\x0a\xff"_qba);
    EXPECT_EQ(message.modem_id, 86426);
    EXPECT_EQ(message.hw_type, "amiplus"_q);
    EXPECT_EQ(message.tag, "electricity"_q);
    EXPECT_EQ(message.data.object(), telegram().decoded);
}

TEST(MessageBuilder, AssignsTimesOneMinuteApartBackFromTheStart) {
    const auto messages = buildMessages({telegram(), telegram(), telegram()}, start);
    EXPECT_EQ(messages[0].timestamp, start);
    EXPECT_EQ(messages[2].timestamp, start.addSecs(-120));
    EXPECT_EQ(messages[2].time_detected, start.addSecs(-122));
}

TEST(MessageBuilder, AssignsTimesInWholeSeconds) {
    const auto message = buildMessages({telegram()}, start.addMSecs(999)).front();
    EXPECT_EQ(message.timestamp, start);
    EXPECT_EQ(message.time_detected, start.addSecs(-2));
}

TEST(MessageBuilder, LetsMessagesExpireTwelveHoursAfterTheStart) {
    const auto messages = buildMessages({telegram(), telegram()}, start);
    EXPECT_EQ(messages[0].ttl, start.addSecs(43'200));
    EXPECT_EQ(messages[1].ttl, start.addSecs(43'200));
}

TEST(MessageBuilder, GivesTheMessagesOfARunAndOfTheNextIdsOfTheirOwn) {
    const std::vector<Telegram> telegrams(100, telegram());
    std::set<quint64> ids;
    for (const auto& runStart : {start, start.addMSecs(1)}) {
        for (const auto& message : buildMessages(telegrams, runStart)) {
            ids.insert(message.unique_id);
        }
    }
    EXPECT_EQ(ids.size(), 200U);
}

TEST(MessageBuilder, MarksTheMessageAsTheDemos) {
    const auto message = buildMessages({telegram()}, start).front();
    EXPECT_TRUE(host::isDemos(message));
    EXPECT_EQ(message.extended_data.object().value("line"_q), QJsonValue(7));
}

TEST(MessageBuilder, TakesExtendedDataOfOthersForForeign) {
    model::message message;
    EXPECT_FALSE(host::isDemos(message));
    message.extended_data = QJsonDocument(QJsonObject{{"source"_q, "other"_q}});
    EXPECT_FALSE(host::isDemos(message));
}

TEST(MessageBuilder, TellsWiredTelegramsFromRadioTelegrams) {
    auto wired = telegram();
    wired.payload = "\x68\x03\x03\x68\x08"_qba;
    const auto messages = buildMessages({telegram(), wired}, start);
    EXPECT_EQ(messages[0].protocol, "wM-Bus"_q);
    EXPECT_EQ(messages[1].protocol, "M-Bus"_q);
    EXPECT_EQ(messages[1].phy, "wire"_q);
}

TEST(MessageBuilder, TakesATelegramWithTwoLengthsForARadioTelegram) {
    auto odd = telegram();
    odd.payload = "\x68\x03\x04\x68\x08"_qba;
    EXPECT_EQ(buildMessages({odd}, start).front().protocol, "wM-Bus"_q);
}

TEST(MessageBuilder, LeavesTheHostsOwnMembersEmpty) {
    const auto message = buildMessages({telegram()}, start).front();
    EXPECT_EQ(message.extra_text, QString());
    EXPECT_EQ(message.extra_value1, 0);
    EXPECT_EQ(message.extra_value2, 0);
}

} // namespace
