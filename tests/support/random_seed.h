#pragma once

#include <cstdint>
#include <cstdlib>

namespace test_support {

/// What a random test begins with: the number in the environment variable KELVRO_SEED, or else
/// `usual`, which makes every run alike.
inline std::uint32_t randomSeed(std::uint32_t usual) {
    const char* chosen = std::getenv("KELVRO_SEED");
    return chosen != nullptr ? static_cast<std::uint32_t>(std::strtoul(chosen, nullptr, 0)) : usual;
}

} // namespace test_support
