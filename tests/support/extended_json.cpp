#include "tests/support/extended_json.h"

#include <bson/bson.h>

#include <memory>
#include <stdexcept>

namespace test_support {

bsoncxx::v1::document::value fromJson(std::string_view extendedJson) {
    bson_t bson;
    bson_error_t error;
    if (!bson_init_from_json(&bson, extendedJson.data(), static_cast<ssize_t>(extendedJson.size()),
                             &error)) {
        throw std::runtime_error(std::string{error.message} + ": " + std::string{extendedJson});
    }
    bsoncxx::v1::document::value document{
        bsoncxx::v1::document::view{bson_get_data(&bson), bson.len}};
    bson_destroy(&bson);
    return document;
}

std::string toJson(const bsoncxx::v1::document::view& document) {
    bson_t bson;
    if (!bson_init_static(&bson, document.data(), document.size())) {
        throw std::runtime_error("not a BSON document");
    }
    std::size_t length = 0;
    const std::unique_ptr<char, decltype(&bson_free)> text{
        bson_as_canonical_extended_json(&bson, &length), &bson_free};
    if (text == nullptr) {
        throw std::runtime_error("cannot render a BSON document as JSON");
    }
    return {text.get(), length};
}

std::string canonical(std::string_view extendedJson) {
    return toJson(fromJson(extendedJson));
}

} // namespace test_support
