#include "model/documents/dl_message.h"

#include "model/bson/bson_builder.h"
#include "model/bson/json_text.h"
#include "model/bson/ordinary_fields.h"
#include "model/bson_utils.h"
#include "model/documents/stored_times.h"
#include "model/json/json_members.h"

namespace bson_utils {

namespace field = layout::dl_messages;

using dl_status = model::dl_message::dl_status;

bsoncxx::v1::document::value toBson(const model::dl_message& message) {
    bson_builder document;
    document.appendInt32(field::modem_id, message.modem_id);
    document.appendString(field::api_key, message.api_key);
    document.appendDocument(field::data, toBson(message.data));
    document.appendInt32(field::status, static_cast<std::int32_t>(message.status));
    document.appendInt32(field::timeout, message.timeout);
    document.appendInt32(field::f_ack, message.f_ack);
    document.appendHex(field::payload, message.payload);
    document.appendDate(field::ttl, message.ttl.toMSecsSinceEpoch());
    document.appendInt64(field::timestamp, storedSecs(message.timestamp));
    return document.take();
}

template <>
std::optional<model::dl_message> readOrdinary(const bsoncxx::v1::document::view& document,
                                              local_times& times) {
    ordinary_fields fields{document};
    model::dl_message message;
    message.db_id = fields.oid(field::id);
    message.modem_id = fields.int32(field::modem_id);
    message.api_key = fields.text(field::api_key);
    message.data = fields.object(field::data);
    message.status = static_cast<dl_status>(fields.int32(field::status));
    message.timeout = fields.int32(field::timeout);
    message.f_ack = fields.int32(field::f_ack);
    message.payload = fields.hexBytes(field::payload);
    message.ttl = times.at(fields.date(field::ttl));
    message.timestamp = utcSecs(fields.shortInt64(field::timestamp));
    return fields.ordinary() ? std::optional{std::move(message)} : std::nullopt;
}

template <>
model::dl_message readPlain(const bsoncxx::v1::document::view& document) {
    const json_members members{legacyObject(document)};
    model::dl_message message;
    message.db_id = json_members{members.object(field::id)}.text("$oid");
    message.modem_id = members.number(field::modem_id);
    message.api_key = members.text(field::api_key);
    message.data = members.object(field::data);
    message.status = static_cast<dl_status>(members.number(field::status));
    message.timeout = members.number(field::timeout);
    message.f_ack = members.number(field::f_ack);
    message.payload = QByteArray::fromHex(members.text(field::payload).toLatin1());
    message.ttl = localMsecs(members.object(field::ttl));
    message.timestamp = utcSecs(members.number(field::timestamp));
    return message;
}

} // namespace bson_utils
