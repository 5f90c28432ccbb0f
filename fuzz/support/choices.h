#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace fuzz {

/// Takes the bytes of an input for choices, one after the other. Zeros follow the last byte. One
/// choice an expression: compilers differ in the order of operands, and an input has to mean the
/// same to each.
class choices {
public:
    explicit choices(std::string_view bytes) : m_rest(bytes) {}

    bool atEnd() const { return m_rest.empty(); }

    std::uint8_t byte() { return number<std::uint8_t>(); }
    std::uint32_t below(std::uint32_t limit) { return byte() % limit; }
    /// Not for a zero byte, which is what a fuzzer's inputs hold most of.
    bool rarely() { return byte() > 0xE0; }

    template <typename Number>
    Number number() {
        Number value{};
        const std::string_view taken = bytes(sizeof value);
        std::memcpy(&value, taken.data(), taken.size());
        return value;
    }

    std::string_view bytes(std::size_t size) {
        const std::string_view taken = m_rest.substr(0, size);
        m_rest.remove_prefix(taken.size());
        return taken;
    }

    std::string_view rest() { return bytes(m_rest.size()); }

private:
    std::string_view m_rest;
};

inline std::string_view textOf(const std::uint8_t* data, std::size_t size) {
    return {reinterpret_cast<const char*>(data), size};
}

} // namespace fuzz
