#pragma once

#include <cstddef>

/// Counts what the whole process holds on the heap: counting_heap.cpp takes the place of malloc()
/// and its relatives in every library of the process.
///
/// Counts the blocks' usable sizes and the 8 bytes that glibc keeps with each; what glibc holds in
/// reserve is not counted. Correct with several threads.
namespace bench::counting_heap {

/// Bytes held now.
std::size_t held();

/// The most that was held at once since the last startPeak(), or since the start.
std::size_t peak();
void startPeak();

} // namespace bench::counting_heap
