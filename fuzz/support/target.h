#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

/// What a fuzzer calls with each of its inputs; defined by each target.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz {

/// Ends the process, which is how a fuzzer sees that an input fails.
inline void require(bool holds, const char* what, const std::string& details = {}) {
    if (!holds) {
        std::fprintf(stderr, "Not so: %s\n%s\n", what, details.c_str());
        std::abort();
    }
}

} // namespace fuzz
