#include "model/documents/ul_message.h"

#include "model/bson/bson_builder.h"
#include "model/bson_utils.h"

namespace bson_utils {

namespace field = layout::ul_messages;

namespace {
constexpr int hexadecimal = 16;
} // namespace

bsoncxx::v1::document::value toBson(const model::message& message) {
    bson_builder document;
    document.appendString(field::id, QString::number(message.unique_id, hexadecimal));
    document.appendInt32(field::modem_id, message.modem_id);
    document.appendInt32(field::station_id, message.station_id);
    document.appendString(field::phy, message.phy);
    document.appendInt32(field::rssi, message.rssi);
    document.appendInt32(field::snr, message.snr);
    document.appendDate(field::ttl, message.ttl);
    document.appendSecs(field::timestamp, message.timestamp);
    document.appendSecs(field::time_detected, message.time_detected);
    document.appendInt32(field::bs_timezone_offset, message.bs_timezone_offset);
    document.appendString(field::tag, message.tag);
    document.appendString(field::hw_type, message.hw_type);
    document.appendString(field::protocol, message.protocol);
    document.appendDocument(field::extended_data, toBson(message.extended_data));
    document.appendDocument(field::data, toBson(message.data));
    document.appendHex(field::payload, message.payload);
    document.appendString(field::parse_status, message.parse_status);
    return document.take();
}

template <typename Fields>
void read(Fields& fields, model::message& message) {
    message.unique_id = fields.hexNumber(field::id);
    message.modem_id = fields.number(field::modem_id);
    message.station_id = fields.number(field::station_id);
    message.phy = fields.text(field::phy);
    message.rssi = fields.number(field::rssi);
    message.snr = fields.number(field::snr);
    message.ttl = fields.localTime(field::ttl);
    message.timestamp = fields.localSecs(field::timestamp);
    message.time_detected = fields.localSecs(field::time_detected);
    message.bs_timezone_offset = fields.number(field::bs_timezone_offset);
    message.tag = fields.text(field::tag);
    message.hw_type = fields.text(field::hw_type);
    message.protocol = fields.text(field::protocol);
    message.extended_data = QJsonDocument{fields.object(field::extended_data)};
    message.data = QJsonDocument{fields.object(field::data)};
    message.payload = fields.hexBytes(field::payload);
    message.parse_status = fields.text(field::parse_status);
}

template void read(ordinary_fields& fields, model::message& message);
template void read(typed_fields& fields, model::message& message);

} // namespace bson_utils
