#include "host/records/event_builder.h"

#include "host/records/demo_mark.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QJsonObject>
#include <QStringList>
#include <gtest/gtest.h>

namespace {

using namespace test_support::literals;

model::message message(const QJsonObject& readings) {
    model::message message;
    message.modem_id = 5;
    message.unique_id = 77;
    message.timestamp = QDateTime::fromSecsSinceEpoch(1'800'000'000, Qt::UTC);
    message.ttl = message.timestamp.addSecs(60);
    message.data = QJsonDocument(readings);
    return message;
}

QStringList textsOf(const QJsonObject& readings) {
    QStringList texts;
    for (const auto& event : host::findEvents({message(readings)})) {
        texts.append(event.message);
    }
    return texts;
}

TEST(EventBuilder, MakesAnEventOfAStatus) {
    const auto events = host::findEvents({message({{"status"_q, "TEMPORARY_ERROR"_q}})});
    ASSERT_EQ(events.size(), 1U);
    const auto& event = events.front();
    EXPECT_EQ(event.modem_id, 5);
    EXPECT_EQ(event.timestamp, QDateTime::fromSecsSinceEpoch(1'800'000'000, Qt::UTC));
    EXPECT_EQ(event.ttl, QDateTime::fromSecsSinceEpoch(1'800'000'060, Qt::UTC));
    EXPECT_EQ(event.event_code, static_cast<int>(host::EventCode::Status));
    EXPECT_EQ(event.message_id, "77"_q);
    EXPECT_EQ(event.message, "TEMPORARY_ERROR"_q);
    EXPECT_EQ(event.parameter, 0);
    EXPECT_TRUE(host::isDemos(event));
    EXPECT_EQ(event.extended_data.object().value("member"_q), QJsonValue("status"_q));
}

TEST(EventBuilder, MakesAnEventOfEachErrorFlag) {
    const auto events = host::findEvents({message({{"error_flags"_q, "A B"_q}})});
    ASSERT_EQ(events.size(), 2U);
    EXPECT_EQ(events[1].event_code, static_cast<int>(host::EventCode::ErrorFlag));
    EXPECT_EQ(events[1].message, "B"_q);
    EXPECT_EQ(events[1].parameter, 1);
}

TEST(EventBuilder, MakesOneEventOfAWordThatIsBothStatusAndFlag) {
    EXPECT_EQ(textsOf({{"status"_q, "E1 OPEN"_q}, {"error_flags"_q, "E1"_q}}),
              (QStringList{"E1"_q, "OPEN"_q}));
}

TEST(EventBuilder, MakesNoEventOfOk) {
    EXPECT_EQ(textsOf({{"status"_q, "OK"_q}, {"error_flags"_q, ""_q}}), QStringList());
}

TEST(EventBuilder, MakesNoEventOfReadingsWithoutAStatus) {
    EXPECT_EQ(textsOf({{"total_m3"_q, 1}, {"status"_q, QJsonValue::Null}}), QStringList());
}

} // namespace
