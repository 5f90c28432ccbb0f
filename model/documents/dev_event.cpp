#include "model/documents/dev_event.h"

#include "model/bson/bson_builder.h"
#include "model/bson/json_text.h"
#include "model/bson/ordinary_fields.h"
#include "model/bson_utils.h"
#include "model/documents/stored_times.h"
#include "model/json/json_members.h"

namespace bson_utils {

namespace field = layout::eav_events;

bsoncxx::v1::document::value toBson(const model::dev_event& event) {
    bson_builder document;
    document.appendInt32(field::modem_id, event.modem_id);
    document.appendInt64(field::timestamp, storedSecs(event.timestamp));
    document.appendString(field::message_id, event.message_id);
    document.appendInt32(field::event_code, event.event_code);
    document.appendString(field::message, event.message);
    document.appendInt32(field::parameter, event.parameter);
    document.appendDocument(field::extended_data, toBson(event.extended_data));
    document.appendDate(field::ttl, event.ttl.toMSecsSinceEpoch());
    return document.take();
}

template <>
std::optional<model::dev_event> readOrdinary(const bsoncxx::v1::document::view& document,
                                             local_times& times) {
    ordinary_fields fields{document};
    model::dev_event event;
    fields.oid(layout::server_id);
    event.modem_id = fields.int32(field::modem_id);
    event.timestamp = utcSecs(fields.shortInt64(field::timestamp));
    event.message_id = fields.text(field::message_id);
    event.event_code = fields.int32(field::event_code);
    event.message = fields.text(field::message);
    event.parameter = fields.int32(field::parameter);
    event.extended_data = QJsonDocument{fields.object(field::extended_data)};
    event.ttl = times.at(fields.date(field::ttl));
    return fields.ordinary() ? std::optional{std::move(event)} : std::nullopt;
}

template <>
model::dev_event readPlain(const bsoncxx::v1::document::view& document) {
    const json_members members{legacyObject(document)};
    model::dev_event event;
    event.modem_id = members.number(field::modem_id);
    event.timestamp = utcSecs(members.number(field::timestamp));
    event.message_id = members.text(field::message_id);
    event.event_code = members.number(field::event_code);
    event.message = members.text(field::message);
    event.parameter = members.number(field::parameter);
    event.extended_data = QJsonDocument{members.object(field::extended_data)};
    event.ttl = localMsecs(members.object(field::ttl));
    return event;
}

} // namespace bson_utils
