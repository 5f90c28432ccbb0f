#include "model/documents/dev_value.h"

#include "model/bson/bson_builder.h"
#include "model/bson/json_text.h"
#include "model/bson/ordinary_fields.h"
#include "model/bson_utils.h"
#include "model/documents/stored_times.h"
#include "model/json/json_members.h"
#include "model/json/json_variant.h"

namespace bson_utils {

namespace field = layout::eav_values;

bsoncxx::v1::document::value toBson(const model::dev_value& value) {
    bson_builder document;
    document.appendInt32(field::modem_id, value.modem_id);
    document.appendString(field::message_id, value.message_id);
    document.appendInt64(field::timestamp, storedSecs(value.timestamp));
    document.appendString(field::tag, value.tag);
    document.appendString(field::obis_code, value.obis_code);
    // The type of the value as it was, also where bsonAppend narrows or replaces it.
    document.appendInt64(field::val_type, value.value.type());
    document.appendDocument(field::extended_data, toBson(value.extended_data));
    document.appendDate(field::ttl, value.ttl.toMSecsSinceEpoch());
    bsonAppend(document, field::value, value.value);
    return document.take();
}

template <>
std::optional<model::dev_value> readOrdinary(const bsoncxx::v1::document::view& document,
                                             local_times& times) {
    ordinary_fields fields{document};
    model::dev_value value;
    fields.oid(layout::server_id);
    value.modem_id = fields.int32(field::modem_id);
    value.message_id = fields.text(field::message_id);
    value.timestamp = utcSecs(fields.shortInt64(field::timestamp));
    value.tag = fields.text(field::tag);
    value.obis_code = fields.text(field::obis_code);
    fields.int64(field::val_type);
    value.extended_data = QJsonDocument{fields.object(field::extended_data)};
    value.ttl = times.at(fields.date(field::ttl));
    value.value = fields.value(field::value);
    return fields.ordinary() ? std::optional{std::move(value)} : std::nullopt;
}

template <>
model::dev_value readPlain(const bsoncxx::v1::document::view& document) {
    const json_members members{legacyObject(document)};
    model::dev_value value;
    value.modem_id = members.number(field::modem_id);
    value.message_id = members.text(field::message_id);
    value.timestamp = utcSecs(members.number(field::timestamp));
    value.tag = members.text(field::tag);
    value.obis_code = members.text(field::obis_code);
    value.extended_data = QJsonDocument{members.object(field::extended_data)};
    value.ttl = localMsecs(members.object(field::ttl));
    value.value = toVariantOfDoubles(members[field::value]);
    return value;
}

} // namespace bson_utils
