// Bytes that are no BSON, or nearly, given to everything that reads it. The length at the start and
// the zero at the end are right, for those the library has checked.

#include "fuzz/support/compare_readers.h"

namespace {

/// A refusal is what hosts expect.
template <typename Read>
bool mayRefuse(const Read& read) {
    try {
        read();
        return false;
    } catch (const bsoncxx::v1::exception&) {
        return true;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto document = test_support::raw_bson::doc(std::string{fuzz::textOf(data, size)});
    bson_utils::query_memory memory;
    fuzz::requireAgreement<model::message>(document, 2, memory);
    fuzz::requireAgreement<model::dl_message>(document, 2, memory);
    fuzz::requireAgreement<model::dev_value>(document, 2, memory);
    fuzz::requireAgreement<model::dev_event>(document, 2, memory);
    fuzz::requireAgreement<bson_utils::device_object>(document, 2, memory);
    mayRefuse([&] { bson_utils::fromBsonJobj(document.view()); });
    mayRefuse([&] { bson_utils::insertedObject(document.view()); });
    mayRefuse([&] { bson_utils::fromBsonArr(document.arrayView()); });
    return 0;
}
