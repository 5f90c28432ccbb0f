#include "host/record_compare.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QJsonArray>
#include <QJsonObject>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

namespace {

using namespace test_support::literals;
using host::differences;

model::message sample() {
    model::message message;
    message.modem_id = 1;
    message.station_id = 2;
    message.ttl = QDateTime::fromMSecsSinceEpoch(1'800'000'000'123, Qt::UTC);
    message.timestamp = QDateTime::fromMSecsSinceEpoch(1'700'000'000'000, Qt::UTC);
    message.time_detected = QDateTime::fromMSecsSinceEpoch(1'700'000'001'000, Qt::UTC);
    message.bs_timezone_offset = 3;
    message.phy = "phy"_q;
    message.snr = 4;
    message.rssi = -5;
    message.tag = "water"_q;
    message.unique_id = 6;
    message.data = QJsonDocument(QJsonObject{{"a"_q, 0.1}, {"b"_q, QJsonValue::Null}});
    message.extended_data = QJsonDocument(QJsonObject{{"c"_q, QJsonArray{1, 2}}});
    message.parse_status = "ok"_q;
    message.hw_type = "make"_q;
    message.protocol = "wM-Bus"_q;
    message.payload = "\x00\x01"_qba;
    return message;
}

TEST(MessageCompare, FindsNothingInACopy) {
    EXPECT_EQ(differences(sample(), sample()), QStringList());
}

TEST(MessageCompare, FindsAChangeOfEachMember) {
    const std::map<std::string, std::function<void(model::message&)>> changes = {
        {"extra_text", [](auto& message) { message.extra_text = "x"_q; }},
        {"extra_value1", [](auto& message) { message.extra_value1 = 1; }},
        {"extra_value2", [](auto& message) { message.extra_value2 = 1; }},
        {"modem_id", [](auto& message) { ++message.modem_id; }},
        {"station_id", [](auto& message) { ++message.station_id; }},
        {"ttl", [](auto& message) { message.ttl = message.ttl.addMSecs(1); }},
        {"timestamp", [](auto& message) { message.timestamp = message.timestamp.addSecs(1); }},
        {"time_detected",
         [](auto& message) { message.time_detected = message.time_detected.addSecs(1); }},
        {"bs_timezone_offset", [](auto& message) { ++message.bs_timezone_offset; }},
        {"phy", [](auto& message) { message.phy.append(u'x'); }},
        {"snr", [](auto& message) { ++message.snr; }},
        {"rssi", [](auto& message) { ++message.rssi; }},
        {"tag", [](auto& message) { message.tag.append(u'x'); }},
        {"unique_id", [](auto& message) { ++message.unique_id; }},
        {"data", [](auto& message) { message.data = {}; }},
        {"extended_data", [](auto& message) { message.extended_data = {}; }},
        {"parse_status", [](auto& message) { message.parse_status.append(u'x'); }},
        {"hw_type", [](auto& message) { message.hw_type.append(u'x'); }},
        {"protocol", [](auto& message) { message.protocol.append(u'x'); }},
        {"payload", [](auto& message) { message.payload.append('\0'); }},
    };
    for (const auto& [member, change] : changes) {
        auto changed = sample();
        change(changed);
        const auto found = differences(sample(), changed);
        ASSERT_EQ(found.size(), 1) << member;
        EXPECT_TRUE(found.front().startsWith(QString::fromStdString(member) + u':')) << member;
    }
}

TEST(MessageCompare, SaysWhatWasWrittenAndWhatCameBack) {
    auto changed = sample();
    changed.rssi = -6;
    changed.payload = "\x00"_qba;
    EXPECT_EQ(differences(sample(), changed),
              (QStringList{"rssi: wrote -5, got -6"_q,
                           "payload: wrote 0001 (2 bytes), got 00 (1 bytes)"_q}));
}

TEST(MessageCompare, ExpectsTimestampsInWholeSeconds) {
    auto written = sample();
    written.timestamp = written.timestamp.addMSecs(999);
    written.time_detected = written.time_detected.addMSecs(1);
    EXPECT_EQ(differences(written, sample()), QStringList());
}

TEST(MessageCompare, ExpectsTheHostsOwnMembersToComeBackEmpty) {
    auto written = sample();
    written.extra_text = "mine"_q;
    written.extra_value1 = 1;
    EXPECT_EQ(differences(written, sample()), QStringList());
}

TEST(MessageCompare, FindsANumberThatDiffersInItsLastBit) {
    auto changed = sample();
    const double next = std::nextafter(0.1, 1.0);
    changed.data = QJsonDocument(QJsonObject{{"a"_q, next}, {"b"_q, QJsonValue::Null}});
    EXPECT_EQ(differences(sample(), changed).size(), 1);
}

TEST(MessageCompare, FindsANullThatIsGone) {
    auto changed = sample();
    changed.data = QJsonDocument(QJsonObject{{"a"_q, 0.1}});
    EXPECT_EQ(differences(sample(), changed).size(), 1);
}

} // namespace
