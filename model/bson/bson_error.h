#pragma once

#include <string>
#include <system_error>

namespace bson_utils {

/// Why a conversion to or from BSON was refused.
enum class bson_errc {
    /// A key with a zero character in it, a text or document beyond BSON's 2 GiB.
    unwritable = 1,
    /// JSON text that libbson's extended-JSON reader rejects.
    json_rejected,
    /// Bytes that are no well-formed document, or that hold invalid UTF-8.
    malformed,
};

/// The category of the codes in the exceptions below; its name is "kelvrostorage.bson".
const std::error_category& bsonErrorCategory() noexcept;

std::error_code make_error_code(bson_errc code) noexcept;

/// Throws the BSON library's own exception, bsoncxx::v1::exception, which is what hosts catch. Its
/// text begins with `why`.
[[noreturn]] void refuse(bson_errc code, const std::string& why);

} // namespace bson_utils

template <>
struct std::is_error_code_enum<bson_utils::bson_errc> : std::true_type {};
