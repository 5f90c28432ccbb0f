#pragma once

#include <stdexcept>

namespace bson_utils {

/// A conversion that libbson refused: JSON text that its reader rejects, a key with a zero
/// character in it, a document that outgrows BSON's 2 GiB. The message carries libbson's own words
/// where it has any.
class bson_error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace bson_utils
