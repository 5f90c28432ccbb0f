#include "model/model_convertors.h"

#include "model/json/json_forms.h"

namespace model_convertors {

namespace {

// The members that heartbeats and incoming messages have in common.
template <typename Record>
void readReception(Record& record, const json_members& json) {
    record.modem_id = json.number("modem_id");
    record.station_id = json.number("station_id");
    record.iterator = json.number("iterator");
    record.phy = json.text("phy");
    record.snr = json.number("snr");
    record.rssi = json.number("rssi");
    record.hw_type = json.text("hw_type");
    record.protocol = json.text("protocol");
    record.time_detected = time(json, "time_detected", Qt::UTC);
    record.time_saved = time(json, "time_saved", Qt::UTC);
    record.payload = hexBytes(json, "payload");
    record.bs_tz = json.number("bs_tz");
}

} // namespace

template <>
model::hb_message fromJson<model::hb_message>(const QJsonObject& object) {
    const json_members json{object};
    model::hb_message message;
    readReception(message, json);
    message.temperature = json.real("temperature");
    message.voltage = json.real("voltage");
    return message;
}

template <>
model::in_message fromJson<model::in_message>(const QJsonObject& object) {
    const json_members json{object};
    model::in_message message;
    readReception(message, json);
    message.dl_phy = json.text("dl_phy");
    message.dl_mode = json.text("dl_mode");
    message.last_dl_bs = json.number("last_dl_bs");
    message.last_dl_bs_aver_busyness = json.real("last_dl_bs_aver_busyness");
    message.last_dl_bs_busyness = json.real("last_dl_bs_busyness");
    message.last_success_dl_ts = json.number("last_success_dl_ts");
    return message;
}

} // namespace model_convertors
