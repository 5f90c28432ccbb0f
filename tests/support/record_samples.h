#pragma once

#include "model/dev_event.h"
#include "model/dev_value.h"
#include "model/dl_message.h"
#include "model/message.h"
#include "tests/support/qt_literals.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

/// One record of each stored kind with every member set, each to a value of its own, so that two
/// members that changed places show. A test changes what it is about.
namespace test_support {

inline QDateTime utcMsecs(qint64 msecs) {
    return QDateTime::fromMSecsSinceEpoch(msecs, Qt::UTC);
}

inline QDateTime utcSecs(qint64 secs) {
    return QDateTime::fromSecsSinceEpoch(secs, Qt::UTC);
}

inline model::message sampleMessage() {
    using namespace literals;
    return {
        .extra_text = "the host's own"_q,
        .extra_value1 = 71,
        .extra_value2 = 72,
        .modem_id = 1001,
        .station_id = 2002,
        .ttl = utcMsecs(1900000000123),
        .timestamp = utcSecs(1700000001),
        .time_detected = utcSecs(1700000002),
        .bs_timezone_offset = 180,
        .phy = "phy-868"_q,
        .snr = -7,
        .rssi = -112,
        .tag = "hourly"_q,
        .unique_id = 0x1badcafe,
        .data = QJsonDocument{QJsonObject{{"n"_q, 5}}},
        .extended_data = QJsonDocument{QJsonObject{{"e"_q, "x"_q}}},
        .parse_status = "ok"_q,
        .hw_type = "meter-3"_q,
        .protocol = "proto-9"_q,
        .payload = "\x01\xab"_qba,
    };
}

inline model::dl_message sampleCommand() {
    using namespace literals;
    return {
        .f_ack = 1,
        .modem_id = 1001,
        .timeout = 3600,
        .ttl = utcMsecs(1900000000456),
        .timestamp = utcSecs(1700000003),
        .db_id = "not stored"_q,
        .api_key = "key-42"_q,
        .status = model::dl_message::dl_status::EXECUTED,
        .data = QJsonObject{{"n"_q, 5}},
        .payload = "\xde\xad\xbe\xef"_qba,
        .extra_text = "the host's own"_q,
    };
}

inline model::dev_value sampleValue() {
    using namespace literals;
    return {
        .modem_id = 1001,
        .timestamp = utcSecs(1700000004),
        .obis_code = "1-0:1.8.0"_q,
        .tag = "energy"_q,
        .extended_data = QJsonDocument{QJsonObject{{"e"_q, 7}}},
        .value = 2.5,
        .message_id = "1badcafe"_q,
        .ttl = utcMsecs(1900000000789),
    };
}

inline model::dev_event sampleEvent() {
    using namespace literals;
    return {
        .modem_id = 1001,
        .timestamp = utcSecs(1700000005),
        .event_code = 404,
        .message_id = "1badcafe"_q,
        .message = "cover opened"_q,
        .extended_data = QJsonDocument{QJsonObject{{"e"_q, true}}},
        .parameter = 12,
        .ttl = utcMsecs(1900000000987),
    };
}

} // namespace test_support
