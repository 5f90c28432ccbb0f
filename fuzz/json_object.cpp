// Objects that were made by insertion, as a host's drivers make their states.

#include "fuzz/support/json_of_choices.h"
#include "fuzz/support/json_ways.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::choices choices{fuzz::textOf(data, size)};
    fuzz::writeEachWay(fuzz::anyObject(choices));
    return 0;
}
