#include "bench/harness/counting_heap.h"

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdlib>

// glibc's own functions, under the names that it keeps for those who put something before them.
extern "C" {
// NOLINTBEGIN(bugprone-reserved-identifier)
void* __libc_malloc(std::size_t size);
void* __libc_calloc(std::size_t count, std::size_t size);
void* __libc_realloc(void* block, std::size_t size);
void* __libc_memalign(std::size_t alignment, std::size_t size);
void __libc_free(void* block);
// NOLINTEND(bugprone-reserved-identifier)
}

namespace bench::counting_heap {

namespace {

constexpr std::size_t headerBytes = 8;

std::atomic<std::size_t> heldBytes{0};
std::atomic<std::size_t> peakBytes{0};

std::size_t sizeOf(void* block) {
    return block == nullptr ? 0 : ::malloc_usable_size(block) + headerBytes;
}

void* added(void* block) {
    const std::size_t size = sizeOf(block);
    const std::size_t now = heldBytes.fetch_add(size, std::memory_order_relaxed) + size;
    std::size_t most = peakBytes.load(std::memory_order_relaxed);
    while (now > most && !peakBytes.compare_exchange_weak(most, now, std::memory_order_relaxed)) {
    }
    return block;
}

void removed(std::size_t size) {
    heldBytes.fetch_sub(size, std::memory_order_relaxed);
}

} // namespace

std::size_t held() {
    return heldBytes.load();
}

std::size_t peak() {
    return peakBytes.load();
}

void startPeak() {
    peakBytes = heldBytes.load();
}

} // namespace bench::counting_heap

using bench::counting_heap::added;
using bench::counting_heap::removed;
using bench::counting_heap::sizeOf;

// The library's headers name the parameters with reserved identifiers.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {

[[gnu::visibility("default")]] void* malloc(std::size_t size) {
    return added(__libc_malloc(size));
}

[[gnu::visibility("default")]] void* calloc(std::size_t count, std::size_t size) {
    return added(__libc_calloc(count, size));
}

[[gnu::visibility("default")]] void* realloc(void* block, std::size_t size) {
    const std::size_t before = sizeOf(block);
    void* const moved = __libc_realloc(block, size);
    if (moved != nullptr || size == 0) {
        removed(before);
        added(moved);
    }
    return moved;
}

[[gnu::visibility("default")]] void* memalign(std::size_t alignment, std::size_t size) {
    return added(__libc_memalign(alignment, size));
}

[[gnu::visibility("default")]] void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return added(__libc_memalign(alignment, size));
}

[[gnu::visibility("default")]] int posix_memalign(void** block, std::size_t alignment,
                                                  std::size_t size) {
    *block = added(__libc_memalign(alignment, size));
    return *block == nullptr ? ENOMEM : 0;
}

[[gnu::visibility("default")]] void free(void* block) {
    removed(sizeOf(block));
    __libc_free(block);
}

} // extern "C"
// NOLINTEND(readability-inconsistent-declaration-parameter-name)
