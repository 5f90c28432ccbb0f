#pragma once

#include "model/dl_message.h"
#include "model/filter_dl.h"
#include "model/filter_roll.h"
#include "model/message.h"
#include "tests/support/qt_literals.h"
#include "tests/support/qt_printers.h"

#include <list>
#include <map>
#include <memory>
#include <vector>

/// Records for the tests of the message stores: every member has a value of its own, and a test
/// names those that matter to it.
namespace records {

using namespace test_support::literals;

inline QDateTime utc(qint64 secs) {
    return QDateTime::fromSecsSinceEpoch(secs, Qt::UTC);
}

/// Far away, for the server removes what has expired.
inline QDateTime in2100() {
    return QDateTime::fromMSecsSinceEpoch(4'102'444'800'123, Qt::UTC);
}

struct uplink {
    quint64 id = 0xabc;
    int modem = 7;
    qint64 at = 1'700'000'000;
    qint64 detected = 1'699'999'990;
    QString tag = QStringLiteral("readings");

    model::message record() const {
        model::message message;
        message.extra_text = "of the host"_q;
        message.extra_value1 = 11;
        message.extra_value2 = 12;
        message.modem_id = modem;
        message.station_id = 30;
        message.ttl = in2100();
        message.timestamp = utc(at);
        message.time_detected = utc(detected);
        message.bs_timezone_offset = 3;
        message.phy = "dbpsk"_q;
        message.snr = 21;
        message.rssi = -97;
        message.tag = tag;
        message.unique_id = id;
        message.data = QJsonDocument::fromJson(R"({"energy":{"total":12.5},"flags":[1,true,"x"]})");
        message.extended_data = QJsonDocument::fromJson(R"({"count":5})");
        message.parse_status = "ok"_q;
        message.hw_type = "meter-3"_q;
        message.protocol = "wm-bus"_q;
        message.payload = QByteArray::fromHex("01ab00ff");
        return message;
    }

    operator model::message() const { return record(); }
};

struct downlink {
    int modem = 7;
    qint64 at = 1'700'000'000;
    model::dl_message::dl_status status = model::dl_message::dl_status::PENDING;

    model::dl_message record() const {
        model::dl_message message;
        message.f_ack = 1;
        message.modem_id = modem;
        message.timeout = 90;
        message.ttl = in2100();
        message.timestamp = utc(at);
        message.api_key = "key-5"_q;
        message.status = status;
        message.data = QJsonObject{{"relay"_q, 2}, {"mode"_q, "on"_q}};
        message.payload = QByteArray::fromHex("0a0bff");
        message.extra_text = "of the host"_q;
        return message;
    }

    operator model::dl_message() const { return record(); }
};

/// Everything that these devices sent before 2100.
inline model::filter_roll uplinksOf(std::list<int> modem_ids) {
    model::filter_roll filter;
    filter.modem_ids = std::move(modem_ids);
    filter.begin = utc(0);
    filter.end = in2100();
    return filter;
}

inline model::filter_dl downlinksOf(std::list<int> modem_ids) {
    model::filter_dl filter;
    filter.modem_ids = std::move(modem_ids);
    filter.begin = utc(0);
    filter.end = in2100();
    return filter;
}

using ids_by_device = std::map<int, std::vector<quint64>>;
using times_by_device = std::map<int, std::vector<qint64>>;

inline ids_by_device idsOf(const std::map<int, std::list<model::message>>& messages) {
    ids_by_device ids;
    for (const auto& [device, list] : messages) {
        for (const model::message& message : list) {
            ids[device].push_back(message.unique_id);
        }
    }
    return ids;
}

inline times_by_device timesOf(const std::map<int, std::list<model::dl_message>>& commands) {
    times_by_device times;
    for (const auto& [device, list] : commands) {
        for (const model::dl_message& command : list) {
            times[device].push_back(command.timestamp.toSecsSinceEpoch());
        }
    }
    return times;
}

} // namespace records
