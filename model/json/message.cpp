#include "model/model_convertors.h"

#include "model/json/json_forms.h"

namespace model_convertors {

template <>
model::message fromJson<model::message>(const QJsonObject& object) {
    const json_members json{object};
    model::message message;
    // A negative number is sign-extended.
    message.unique_id = static_cast<quint64>(qint64{json.number("unique_id")});
    // Deliberate: local time, where heartbeats and incoming messages have UTC.
    message.ttl = time(json, "ttl", Qt::LocalTime);
    message.timestamp = time(json, "timestamp", Qt::LocalTime);
    message.time_detected = time(json, "time_detected", Qt::LocalTime);
    message.bs_timezone_offset = json.number("bs_timezone_offset");
    message.tag = json.text("tag");
    message.station_id = json.number("station_id");
    message.snr = json.number("snr");
    message.rssi = json.number("rssi");
    message.protocol = json.text("protocol");
    message.phy = json.text("phy");
    message.parse_status = json.text("parse_status");
    message.modem_id = json.number("modem_id");
    // Deliberate: a number here, one character of text in the record; hosts send type codes.
    message.hw_type = QLatin1Char{static_cast<char>(json.number("hw_type"))};
    message.extended_data = QJsonDocument{json.object("extended_data")};
    message.data = QJsonDocument{json.object("data")};
    // Deliberate: the text as it stands, although toJson writes hexadecimal.
    message.payload = json.text("payload").toLatin1();
    return message;
}

QJsonObject toJson(const model::message& message) {
    return jsonObject({
        {"unique_id", static_cast<qint64>(message.unique_id)},
        {"ttl", seconds(message.ttl)},
        {"timestamp", seconds(message.timestamp)},
        {"time_detected", seconds(message.time_detected)},
        {"bs_timezone_offset", message.bs_timezone_offset},
        {"station_id", message.station_id},
        {"snr", message.snr},
        {"rssi", message.rssi},
        {"modem_id", message.modem_id},
        {"tag", message.tag},
        {"protocol", message.protocol},
        {"phy", message.phy},
        {"parse_status", message.parse_status},
        {"hw_type", message.hw_type},
        {"extended_data", content(message.extended_data)},
        {"data", content(message.data)},
        {"payload", hexText(message.payload)},
    });
}

} // namespace model_convertors
