#include "model/documents/ul_message.h"

#include "model/bson/bson_builder.h"
#include "model/bson/ordinary_fields.h"
#include "model/bson_utils.h"
#include "model/documents/stored_times.h"

#include <bsoncxx/v1/element/view.hpp>
#include <bsoncxx/v1/types/view.hpp>

#include <algorithm>

namespace bson_utils {

namespace field = layout::ul_messages;

namespace {

constexpr int hexadecimal = 16;
constexpr qint64 msecsPerSec = 1000;

// The members by their typed accessors, which throw where there is nothing of that type.
class typed_members {
public:
    // Damage anywhere is an error: going through the elements throws then.
    explicit typed_members(const bsoncxx::v1::document::view& document) : m_document(document) {
        std::ranges::for_each(document, [](const auto& /*element*/) {});
    }

    bsoncxx::v1::element::view operator[](std::string_view key) const { return m_document[key]; }
    int int32(std::string_view key) const { return m_document[key].get_int32().value; }
    QString text(std::string_view key) const {
        const auto utf8 = m_document[key].get_string().value;
        return QString::fromUtf8(utf8.data(), static_cast<int>(utf8.size()));
    }
    QJsonDocument json(std::string_view key) const {
        return QJsonDocument{fromBsonJobj(m_document[key].get_document().value)};
    }
    QDateTime localSecs(std::string_view key) const {
        return QDateTime::fromTime_t(static_cast<uint>(m_document[key].get_int64().value));
    }

private:
    bsoncxx::v1::document::view m_document;
};

} // namespace

bsoncxx::v1::document::value toBson(const model::message& message) {
    bson_builder document;
    document.appendString(field::id, QString::number(message.unique_id, hexadecimal));
    document.appendInt32(field::modem_id, message.modem_id);
    document.appendInt32(field::station_id, message.station_id);
    document.appendString(field::phy, message.phy);
    document.appendInt32(field::rssi, message.rssi);
    document.appendInt32(field::snr, message.snr);
    document.appendDate(field::ttl, message.ttl.toMSecsSinceEpoch());
    document.appendInt64(field::timestamp, storedSecs(message.timestamp));
    document.appendInt64(field::time_detected, storedSecs(message.time_detected));
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

template <>
std::optional<model::message> readOrdinary(const bsoncxx::v1::document::view& document,
                                           local_times& times) {
    // Qt's unsigned 32-bit count of seconds.
    const auto local = [&](std::int64_t secs) {
        return times.at(msecsPerSec * static_cast<uint>(secs));
    };
    ordinary_fields fields{document};
    model::message message;
    message.unique_id = fields.text(field::id).toULongLong(nullptr, hexadecimal);
    message.modem_id = fields.int32(field::modem_id);
    message.station_id = fields.int32(field::station_id);
    message.phy = fields.text(field::phy);
    message.rssi = fields.int32(field::rssi);
    message.snr = fields.int32(field::snr);
    message.ttl = times.at(fields.date(field::ttl));
    message.timestamp = local(fields.int64(field::timestamp));
    message.time_detected = local(fields.int64(field::time_detected));
    message.bs_timezone_offset = fields.int32(field::bs_timezone_offset);
    message.tag = fields.text(field::tag);
    message.hw_type = fields.text(field::hw_type);
    message.protocol = fields.text(field::protocol);
    message.extended_data = QJsonDocument{fields.object(field::extended_data)};
    message.data = QJsonDocument{fields.object(field::data)};
    message.payload = fields.hexBytes(field::payload);
    message.parse_status = fields.text(field::parse_status);
    return fields.ordinary() ? std::optional{std::move(message)} : std::nullopt;
}

template <>
model::message readPlain(const bsoncxx::v1::document::view& document) {
    const typed_members members{document};
    model::message message;
    message.unique_id = members.text(field::id).toULongLong(nullptr, hexadecimal);
    message.modem_id = members.int32(field::modem_id);
    message.station_id = members.int32(field::station_id);
    message.phy = members.text(field::phy);
    message.rssi = members.int32(field::rssi);
    message.snr = members.int32(field::snr);
    if (const auto ttl = members[field::ttl]) {
        message.ttl = QDateTime::fromMSecsSinceEpoch(ttl.get_date().value.count());
    }
    message.timestamp = members.localSecs(field::timestamp);
    message.time_detected = members.localSecs(field::time_detected);
    message.bs_timezone_offset = members.int32(field::bs_timezone_offset);
    message.tag = members.text(field::tag);
    message.hw_type = members.text(field::hw_type);
    message.protocol = members.text(field::protocol);
    message.extended_data = members.json(field::extended_data);
    message.data = members.json(field::data);
    message.payload = QByteArray::fromHex(members.text(field::payload).toLatin1());
    message.parse_status = members.text(field::parse_status);
    return message;
}

} // namespace bson_utils
