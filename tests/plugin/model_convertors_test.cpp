#include "model/model_convertors.h"

#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"
#include "tests/support/record_equality.h"
#include "tests/support/record_samples.h"

#include <gtest/gtest.h>

#include <dlfcn.h>

// Each conversion that the plug-in exports, called by a host that links the plug-in.
namespace {

using model_convertors::fromJson;
using model_convertors::toJson;
using namespace test_support;
using namespace test_support::literals;

std::string compact(const QJsonObject& json) {
    return QJsonDocument{json}.toJson(QJsonDocument::Compact).toStdString();
}

QJsonObject json(const char* text) {
    return QJsonDocument::fromJson(text).object();
}

TEST(LinkedPlugin, IsWhereTheConversionsAre) {
    QJsonObject (*conversion)(const model::message&) = toJson;
    Dl_info where{};

    ASSERT_NE(dladdr(reinterpret_cast<void*>(conversion), &where), 0);
    EXPECT_TRUE(QString::fromUtf8(where.dli_fname).contains("libkelvrostorage"_q))
        << where.dli_fname;
}

TEST(LinkedPlugin, WritesUplinks) {
    EXPECT_EQ(compact(toJson(sampleMessage())),
              R"({"bs_timezone_offset":180,"data":{"n":5},"extended_data":{"e":"x"},)"
              R"("hw_type":"meter-3","modem_id":1001,"parse_status":"ok","payload":"01ab",)"
              R"("phy":"phy-868","protocol":"proto-9","rssi":-112,"snr":-7,"station_id":2002,)"
              R"("tag":"hourly","time_detected":1700000002,"timestamp":1700000001,)"
              R"("ttl":1900000000,"unique_id":464374526})");
}

TEST(LinkedPlugin, WritesCommands) {
    EXPECT_EQ(compact(toJson(sampleCommand())),
              R"({"data":{"n":5},"db_id":"not stored","dl_status":"EXECUTED","f_ack":1,)"
              R"("modem_id":1001,"payload":"deadbeef","timeout":3600,"timestamp":1700000003,)"
              R"("ttl":1900000000})");
}

TEST(LinkedPlugin, WritesValues) {
    EXPECT_EQ(compact(toJson(sampleValue())),
              R"({"message_id":"1badcafe","modem_id":1001,"obis_code":"1-0:1.8.0","tag":"energy",)"
              R"("timestamp":1700000004,"ttl":1900000000,"value":2.5})");
}

TEST(LinkedPlugin, WritesEvents) {
    EXPECT_EQ(compact(toJson(sampleEvent())),
              R"({"event_code":404,"extended_data":{"e":true},"message":"cover opened",)"
              R"("message_id":"1badcafe","modem_id":1001,"parameter":12,"timestamp":1700000005,)"
              R"("ttl":1900000000})");
}

TEST(LinkedPlugin, ReadsUplinks) {
    const auto message = fromJson<model::message>(
        json(R"({"modem_id": 7, "hw_type": 65, "unique_id": -1, "payload": "0a"})"));

    EXPECT_EQ(message.modem_id, 7);
    EXPECT_EQ(message.hw_type, "A"_q);
    EXPECT_EQ(message.unique_id, 18446744073709551615U);
    EXPECT_EQ(message.payload, "0a"_qba);
}

TEST(LinkedPlugin, ReadsCommands) {
    const auto command = fromJson<model::dl_message>(
        json(R"({"modem_id": 7, "status": 3, "payload": "0a", "api_key": "k"})"));

    EXPECT_EQ(command.modem_id, 7);
    EXPECT_EQ(command.status, model::dl_message::dl_status::TIMEOUT);
    EXPECT_EQ(command.payload, "\n"_qba);
    EXPECT_EQ(command.api_key, "k"_q);
}

TEST(LinkedPlugin, ReadsHeartbeats) {
    const auto heartbeat = fromJson<model::hb_message>(
        json(R"({"modem_id": 7, "time_saved": 17, "voltage": 3.5, "payload": "ff"})"));

    EXPECT_EQ(heartbeat.modem_id, 7);
    EXPECT_EQ(heartbeat.time_saved, utcSecs(17));
    EXPECT_EQ(heartbeat.voltage, 3.5);
    EXPECT_EQ(heartbeat.payload, "\xff"_qba);
}

TEST(LinkedPlugin, ReadsIncomingMessages) {
    const auto incoming = fromJson<model::in_message>(
        json(R"({"modem_id": 7, "dl_mode": "fast", "last_dl_bs_busyness": 0.25})"));

    EXPECT_EQ(incoming.modem_id, 7);
    EXPECT_EQ(incoming.dl_mode, "fast"_q);
    EXPECT_EQ(incoming.last_dl_bs_busyness, 0.25);
}

TEST(LinkedPlugin, ReadsCustomCommands) {
    const auto command = fromJson<model::custom_cmd>(
        json(R"({"modem_id": [7, "x", 8], "query": {"a": "1"}, "type": "reboot"})"));

    EXPECT_EQ(command.modem_id, (QList<int>{7, 0, 8}));
    EXPECT_EQ(command.query, (QMap<QString, QString>{{"a"_q, "1"_q}}));
    EXPECT_EQ(command.type, "reboot"_q);
}

TEST(LinkedPlugin, ReadsAndWritesQueues) {
    const char* const text =
        R"({"dl":{"q1":{"e7":{"data":{"n":5},"db_id":"5f","repeat":4,"status":"FAIL",)"
        R"("type":"relay"},"repeat":1,"start_from":3,"status":"DONE","timeout":2}},)"
        R"("lock":true,"status":"WAIT"})";
    const auto queues = fromJson<model::dl_queues>(json(text));

    EXPECT_EQ(queues.dl["q1"_q].elements["e7"_q].repeat, 4);
    EXPECT_EQ(queues.status, model::dl_queues::status::WAIT);
    EXPECT_EQ(compact(toJson(queues)), text);
}

} // namespace
