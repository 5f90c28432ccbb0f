#include "fuzz/support/compare_readers.h"
#include "tests/support/stored_members.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using record = bson_utils::device_object;
    fuzz::compareReaders<record>(fuzz::textOf(data, size), test_support::storedMembers<record>);
    return 0;
}
