#include "host/records/record_compare.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <QJsonArray>
#include <QJsonObject>
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <string>

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

/// Expects each change of a record to be found, under the name of the changed member.
template <class Record>
void expectFound(const Record& written,
                 const std::map<std::string, std::function<void(Record&)>>& changes) {
    EXPECT_EQ(differences(written, written), QStringList());
    for (const auto& [member, change] : changes) {
        auto changed = written;
        change(changed);
        const auto found = differences(written, changed);
        ASSERT_EQ(found.size(), 1) << member;
        EXPECT_TRUE(found.front().startsWith(QString::fromStdString(member + ':'))) << member;
    }
}

TEST(MessageCompare, FindsNothingInACopy) {
    EXPECT_EQ(differences(sample(), sample()), QStringList());
}

TEST(MessageCompare, FindsAChangeOfEachMember) {
    expectFound<model::message>(
        sample(),
        {
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
        });
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
    written.extra_value2 = 1;
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

model::dev_value sampleValue() {
    model::dev_value value;
    value.modem_id = 1;
    value.timestamp = QDateTime::fromSecsSinceEpoch(1'700'000'000, Qt::UTC);
    value.obis_code = "1-0:1.8.0"_q;
    value.tag = "tag"_q;
    value.extended_data = QJsonDocument(QJsonObject{{"unit"_q, "kWh"_q}});
    value.value = 0.1;
    value.message_id = "6"_q;
    value.ttl = QDateTime::fromMSecsSinceEpoch(1'800'000'000'123, Qt::UTC);
    return value;
}

TEST(ValueCompare, FindsAChangeOfEachMember) {
    expectFound<model::dev_value>(
        sampleValue(),
        {
            {"modem_id", [](auto& value) { ++value.modem_id; }},
            {"timestamp", [](auto& value) { value.timestamp = value.timestamp.addSecs(1); }},
            {"obis_code", [](auto& value) { value.obis_code.append(u'x'); }},
            {"tag", [](auto& value) { value.tag.append(u'x'); }},
            {"extended_data", [](auto& value) { value.extended_data = {}; }},
            {"value", [](auto& value) { value.value = std::nextafter(0.1, 1.0); }},
            {"message_id", [](auto& value) { value.message_id.append(u'x'); }},
            {"ttl", [](auto& value) { value.ttl = value.ttl.addMSecs(1); }},
        });
}

TEST(ValueCompare, ExpectsAnIntToComeBackAsADouble) {
    auto written = sampleValue();
    written.value = 7;
    auto readBack = written;
    EXPECT_EQ(differences(written, readBack),
              QStringList{"value: wrote double \"7\", got int \"7\""_q});
    readBack.value = 7.0;
    EXPECT_EQ(differences(written, readBack), QStringList());
}

TEST(ValueCompare, TellsANumberFromTheSameNumberAsText) {
    auto changed = sampleValue();
    changed.value = "0.1"_q;
    EXPECT_EQ(differences(sampleValue(), changed).size(), 1);
}

TEST(ValueCompare, TellsNegativeZeroFromZero) {
    auto written = sampleValue();
    written.value = 0.0;
    auto changed = written;
    changed.value = -0.0;
    EXPECT_EQ(differences(written, changed).size(), 1);
}

TEST(EventCompare, FindsAChangeOfEachMember) {
    model::dev_event event;
    event.modem_id = 1;
    event.timestamp = QDateTime::fromSecsSinceEpoch(1'700'000'000, Qt::UTC);
    event.event_code = 2;
    event.message_id = "6"_q;
    event.message = "ALARM"_q;
    event.extended_data = QJsonDocument(QJsonObject{{"a"_q, 1}});
    event.parameter = 3;
    event.ttl = QDateTime::fromMSecsSinceEpoch(1'800'000'000'123, Qt::UTC);
    expectFound<model::dev_event>(
        event, {
                   {"modem_id", [](auto& each) { ++each.modem_id; }},
                   {"timestamp", [](auto& each) { each.timestamp = each.timestamp.addSecs(1); }},
                   {"event_code", [](auto& each) { ++each.event_code; }},
                   {"message_id", [](auto& each) { each.message_id.append(u'x'); }},
                   {"message", [](auto& each) { each.message.append(u'x'); }},
                   {"extended_data", [](auto& each) { each.extended_data = {}; }},
                   {"parameter", [](auto& each) { ++each.parameter; }},
                   {"ttl", [](auto& each) { each.ttl = each.ttl.addMSecs(1); }},
               });
}

model::dl_message sampleCommand() {
    model::dl_message command;
    command.f_ack = 1;
    command.modem_id = 2;
    command.timeout = 3;
    command.ttl = QDateTime::fromMSecsSinceEpoch(1'800'000'000'123, Qt::UTC);
    command.timestamp = QDateTime::fromSecsSinceEpoch(1'700'000'000, Qt::UTC);
    command.db_id = "0123456789abcdef01234567"_q;
    command.api_key = "key"_q;
    command.status = model::dl_message::dl_status::WAIT_DATA;
    command.data = {{"a"_q, 1}};
    command.payload = "\x00\x01"_qba;
    return command;
}

TEST(CommandCompare, FindsAChangeOfEachMember) {
    expectFound<model::dl_message>(
        sampleCommand(),
        {
            {"f_ack", [](auto& command) { command.f_ack = 0; }},
            {"modem_id", [](auto& command) { ++command.modem_id; }},
            {"timeout", [](auto& command) { ++command.timeout; }},
            {"ttl", [](auto& command) { command.ttl = command.ttl.addMSecs(1); }},
            {"timestamp", [](auto& command) { command.timestamp = command.timestamp.addSecs(1); }},
            {"db_id", [](auto& command) { command.db_id.clear(); }},
            {"api_key", [](auto& command) { command.api_key.append(u'x'); }},
            {"status",
             [](auto& command) { command.status = model::dl_message::dl_status::EXECUTED; }},
            {"data", [](auto& command) { command.data = {}; }},
            {"payload", [](auto& command) { command.payload.append('x'); }},
            {"extra_text", [](auto& command) { command.extra_text = "x"_q; }},
        });
}

TEST(CommandCompare, ExpectsTheHostsOwnTextToComeBackEmpty) {
    auto written = sampleCommand();
    written.extra_text = "mine"_q;
    EXPECT_EQ(differences(written, sampleCommand()), QStringList());
}

TEST(QueuesCompare, FindsAChangeOfEachMember) {
    using Status = enum model::dl_queues::status;
    host::DeviceQueues record;
    record.queues.dl["q"_q].elements["e"_q].data = {{"a"_q, 1}};
    const auto element = [](host::DeviceQueues& changed) -> auto& {
        return changed.queues.dl["q"_q].elements["e"_q];
    };
    const auto queue = [](host::DeviceQueues& changed) -> auto& {
        return changed.queues.dl["q"_q];
    };
    const std::vector<std::pair<QString, std::function<void(host::DeviceQueues&)>>> changes = {
        {"queues.dl: wrote q, got "_q, [](auto& changed) { changed.queues.dl.clear(); }},
        {"queues.lock: wrote 0, got 1"_q, [](auto& changed) { changed.queues.lock = true; }},
        {"queues.status: wrote 0, got 2"_q,
         [](auto& changed) { changed.queues.status = Status::WAIT; }},
        {"queues.dl.q.elements: wrote e, got "_q,
         [&](auto& changed) { queue(changed).elements.clear(); }},
        {"queues.dl.q.repeat: wrote 0, got 1"_q, [&](auto& changed) { queue(changed).repeat = 1; }},
        {"queues.dl.q.timeout: wrote 0, got 1"_q,
         [&](auto& changed) { queue(changed).timeout = 1; }},
        {"queues.dl.q.start_from: wrote 0, got 1"_q,
         [&](auto& changed) { queue(changed).start_from = 1; }},
        {"queues.dl.q.status: wrote 0, got 2"_q,
         [&](auto& changed) { queue(changed).status = Status::WAIT; }},
        {"queues.dl.q.elements.e.data: wrote {\"a\":1}, got {}"_q,
         [&](auto& changed) { element(changed).data = {}; }},
        {"queues.dl.q.elements.e.type: wrote \"\", got \"t\""_q,
         [&](auto& changed) { element(changed).type = "t"_q; }},
        {"queues.dl.q.elements.e.db_id: wrote \"\", got \"d\""_q,
         [&](auto& changed) { element(changed).db_id = "d"_q; }},
        {"queues.dl.q.elements.e.status: wrote 0, got 2"_q,
         [&](auto& changed) { element(changed).status = Status::WAIT; }},
        {"queues.dl.q.elements.e.repeat: wrote 0, got 1"_q,
         [&](auto& changed) { element(changed).repeat = 1; }},
    };
    EXPECT_EQ(differences(record, record), QStringList());
    for (const auto& [difference, change] : changes) {
        auto changed = record;
        change(changed);
        EXPECT_EQ(differences(record, changed), QStringList{difference});
    }
}

TEST(QueuesCompare, TellsOneNameWithABlankFromTwo) {
    host::DeviceQueues written;
    written.queues.dl["a b"_q] = {};
    host::DeviceQueues changed;
    changed.queues.dl["a"_q] = {};
    changed.queues.dl["b"_q] = {};
    EXPECT_EQ(differences(written, changed).size(), 1);
}

TEST(QueuesCompare, FindsAQueueUnderAnotherName) {
    host::DeviceQueues written;
    written.queues.dl["a"_q] = {};
    host::DeviceQueues changed;
    changed.queues.dl["b"_q] = {};
    EXPECT_EQ(differences(written, changed), QStringList{"queues.dl: wrote a, got b"_q});
}

TEST(EntryCompare, FindsAChangeOfEachMember) {
    expectFound<host::DeviceEntry>({1, {"a"_q}, "p"_q, "h"_q},
                                   {
                                       {"modem_id", [](auto& each) { ++each.modem_id; }},
                                       {"clients", [](auto& each) { each.clients.clear(); }},
                                       {"protocol", [](auto& each) { each.protocol.clear(); }},
                                       {"hw_type", [](auto& each) { each.hw_type.clear(); }},
                                   });
}

TEST(StateCompare, FindsAChangedValue) {
    expectFound<host::DeviceState>({1, {{"a"_q, 1}}},
                                   {{"values", [](auto& each) { each.values["a"_q] = 2; }}});
}

} // namespace
