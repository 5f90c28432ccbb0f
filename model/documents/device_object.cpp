#include "model/documents/device_object.h"

#include "model/bson/bson_builder.h"
#include "model/bson/json_text.h"
#include "model/bson/ordinary_fields.h"
#include "model/bson_utils.h"
#include "model/json/json_members.h"

namespace bson_utils {

namespace field = layout::persistent;

bsoncxx::v1::document::value toBson(const device_object& object) {
    bson_builder document;
    document.appendInt32(field::id, object.modem_id);
    document.appendDocument(field::state, toBson(object.state));
    return document.take();
}

template <>
std::optional<device_object> readOrdinary(const bsoncxx::v1::document::view& document,
                                          local_times& /*times*/) {
    ordinary_fields fields{document};
    device_object object;
    object.modem_id = fields.int32(field::id);
    object.state = fields.object(field::state);
    return fields.ordinary() ? std::optional{object} : std::nullopt;
}

template <>
device_object readPlain(const bsoncxx::v1::document::view& document) {
    const json_members members{legacyObject(document)};
    return {.modem_id = members.number(field::id), .state = members.object(field::state)};
}

} // namespace bson_utils
