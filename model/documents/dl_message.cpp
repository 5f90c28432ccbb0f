#include "model/documents/dl_message.h"

#include "model/bson/bson_builder.h"
#include "model/bson_utils.h"

namespace bson_utils {

namespace field = layout::dl_messages;

bsoncxx::v1::document::value toBson(const model::dl_message& message) {
    bson_builder document;
    document.appendInt32(field::modem_id, message.modem_id);
    document.appendString(field::api_key, message.api_key);
    document.appendDocument(field::data, toBson(message.data));
    document.appendInt32(field::status, static_cast<std::int32_t>(message.status));
    document.appendInt32(field::timeout, message.timeout);
    document.appendInt32(field::f_ack, message.f_ack);
    document.appendHex(field::payload, message.payload);
    document.appendDate(field::ttl, message.ttl);
    document.appendSecs(field::timestamp, message.timestamp);
    return document.take();
}

template <typename Fields>
void read(Fields& fields, model::dl_message& message) {
    message.db_id = fields.oid(field::id);
    message.modem_id = fields.number(field::modem_id);
    message.api_key = fields.text(field::api_key);
    message.data = fields.object(field::data);
    message.status = static_cast<model::dl_message::dl_status>(fields.number(field::status));
    message.timeout = fields.number(field::timeout);
    message.f_ack = fields.number(field::f_ack);
    message.payload = fields.hexBytes(field::payload);
    message.ttl = fields.localTime(field::ttl);
    message.timestamp = fields.utcSecs(field::timestamp);
}

template void read(ordinary_fields& fields, model::dl_message& message);
template void read(legacy_fields& fields, model::dl_message& message);

} // namespace bson_utils
