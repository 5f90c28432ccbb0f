#pragma once

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

namespace test_support {

/// A record as "Record record;" leaves it, in memory that was full of ones: a member without an
/// initialiser shows, which "Record{}" and fresh memory hide by their zeros.
template <typename Record>
class default_initialized {
public:
    default_initialized() {
        // Called through pointers that the compiler cannot see through, for what is in the memory
        // of an object ahead of its construction does not count otherwise.
        void* (*volatile fill)(void*, int, std::size_t) = std::memset;
        Record* (*volatile construct)(void*) = [](void* place) { return ::new (place) Record; };
        fill(m_place, 0xff, sizeof m_place);
        m_record = construct(m_place);
    }

    ~default_initialized() { std::destroy_at(m_record); }

    default_initialized(const default_initialized&) = delete;
    default_initialized& operator=(const default_initialized&) = delete;

    const Record& operator*() const { return *m_record; }
    const Record* operator->() const { return m_record; }

private:
    alignas(Record) std::byte m_place[sizeof(Record)];
    Record* m_record = nullptr;
};

} // namespace test_support
