#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <unistd.h>

namespace test_support {

/// What this process has open: files, sockets and pipes.
inline std::ptrdiff_t openDescriptors() {
    return std::distance(std::filesystem::directory_iterator{"/proc/self/fd"}, {});
}

/// Bytes of this process that are in memory.
inline std::size_t residentBytes() {
    std::size_t virtualPages = 0;
    std::size_t residentPages = 0;
    std::ifstream{"/proc/self/statm"} >> virtualPages >> residentPages;
    return residentPages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
}

} // namespace test_support
