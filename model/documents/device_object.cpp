#include "model/documents/device_object.h"

#include "model/bson/bson_builder.h"
#include "model/bson_utils.h"

namespace bson_utils {

namespace field = layout::persistent;

bsoncxx::v1::document::value toBson(const device_object& object) {
    bson_builder document;
    document.appendInt32(field::id, object.modem_id);
    document.appendDocument(field::state, toBson(object.state));
    return document.take();
}

template <typename Fields>
void read(Fields& fields, device_object& object) {
    object.modem_id = fields.number(field::id);
    object.state = fields.object(field::state);
}

template void read(ordinary_fields& fields, device_object& object);
template void read(legacy_fields& fields, device_object& object);

} // namespace bson_utils
