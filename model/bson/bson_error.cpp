#include "model/bson/bson_error.h"

#include <bsoncxx/v1/exception.hpp>

namespace bson_utils {

namespace {

class bson_category : public std::error_category {
public:
    const char* name() const noexcept override { return "kelvrostorage.bson"; }

    std::string message(int code) const override {
        switch (static_cast<bson_errc>(code)) {
        case bson_errc::unwritable:
            return "cannot be written as BSON";
        case bson_errc::json_rejected:
            return "JSON text that cannot become BSON";
        case bson_errc::malformed:
            return "damaged BSON";
        }
        return "unknown error";
    }
};

} // namespace

const std::error_category& bsonErrorCategory() noexcept {
    static const bson_category category;
    return category;
}

std::error_code make_error_code(bson_errc code) noexcept {
    return {static_cast<int>(code), bsonErrorCategory()};
}

void refuse(bson_errc code, const std::string& why) {
    throw bsoncxx::v1::exception{make_error_code(code), why};
}

} // namespace bson_utils
