#include "bench/documents.h"

#include <bson/bson.h>

#include <stdexcept>

namespace bench {

bsoncxx::v1::document::value stored(const bsoncxx::v1::document::view& document) {
    using bsoncxx::v1::document::value;
    if (document["_id"]) {
        return value{document};
    }
    bson_t body;
    bson_t with;
    bson_oid_t id;
    bson_oid_init(&id, nullptr);
    bson_init(&with);
    const bool done = bson_init_static(&body, document.data(), document.size()) &&
                      BSON_APPEND_OID(&with, "_id", &id) && bson_concat(&with, &body);
    value copy{bsoncxx::v1::document::view{bson_get_data(&with), with.len}};
    bson_destroy(&with);
    if (!done) {
        throw std::runtime_error("cannot put an id ahead of a document");
    }
    return copy;
}

} // namespace bench
