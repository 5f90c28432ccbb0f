#include "model/documents/dev_value.h"

#include "model/bson/bson_builder.h"
#include "model/bson_utils.h"

namespace bson_utils {

namespace field = layout::eav_values;

bsoncxx::v1::document::value toBson(const model::dev_value& value) {
    bson_builder document;
    document.appendInt32(field::modem_id, value.modem_id);
    document.appendString(field::message_id, value.message_id);
    document.appendSecs(field::timestamp, value.timestamp);
    document.appendString(field::tag, value.tag);
    document.appendString(field::obis_code, value.obis_code);
    // The type of the value as it was, also where bsonAppend narrows or replaces it.
    document.appendInt64(field::val_type, value.value.type());
    document.appendDocument(field::extended_data, toBson(value.extended_data));
    document.appendDate(field::ttl, value.ttl);
    bsonAppend(document, field::value, value.value);
    return document.take();
}

template <typename Fields>
void read(Fields& fields, model::dev_value& value) {
    fields.skip(layout::server_id, BSON_TYPE_OID);
    value.modem_id = fields.number(field::modem_id);
    value.message_id = fields.text(field::message_id);
    value.timestamp = fields.utcSecs(field::timestamp);
    value.tag = fields.text(field::tag);
    value.obis_code = fields.text(field::obis_code);
    fields.skip(field::val_type, BSON_TYPE_INT64);
    value.extended_data = QJsonDocument{fields.object(field::extended_data)};
    value.ttl = fields.localTime(field::ttl);
    value.value = fields.value(field::value);
}

template void read(ordinary_fields& fields, model::dev_value& value);
template void read(legacy_fields& fields, model::dev_value& value);

} // namespace bson_utils
