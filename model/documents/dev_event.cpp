#include "model/documents/dev_event.h"

#include "model/bson/bson_builder.h"
#include "model/bson_utils.h"

namespace bson_utils {

namespace field = layout::eav_events;

bsoncxx::v1::document::value toBson(const model::dev_event& event) {
    bson_builder document;
    document.appendInt32(field::modem_id, event.modem_id);
    document.appendSecs(field::timestamp, event.timestamp);
    document.appendString(field::message_id, event.message_id);
    document.appendInt32(field::event_code, event.event_code);
    document.appendString(field::message, event.message);
    document.appendInt32(field::parameter, event.parameter);
    document.appendDocument(field::extended_data, toBson(event.extended_data));
    document.appendDate(field::ttl, event.ttl);
    return document.take();
}

template <typename Fields>
void read(Fields& fields, model::dev_event& event) {
    fields.skip(layout::server_id, BSON_TYPE_OID);
    event.modem_id = fields.number(field::modem_id);
    event.timestamp = fields.utcSecs(field::timestamp);
    event.message_id = fields.text(field::message_id);
    event.event_code = fields.number(field::event_code);
    event.message = fields.text(field::message);
    event.parameter = fields.number(field::parameter);
    event.extended_data = QJsonDocument{fields.object(field::extended_data)};
    event.ttl = fields.localTime(field::ttl);
}

template void read(ordinary_fields& fields, model::dev_event& event);
template void read(legacy_fields& fields, model::dev_event& event);

} // namespace bson_utils
