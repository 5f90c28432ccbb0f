#pragma once

#include "tests/support/random_seed.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <random>
#include <vector>

/// Whether the tests of this executable go to every byte or to some.
extern const bool everyByte;

/// The places from `begin` to before `end`; or some of them, alike in every run.
inline std::vector<int> bytePlaces(int begin, int end) {
    constexpr int some = 24;
    std::vector<int> places(static_cast<std::size_t>(std::max(end - begin, 0)));
    std::iota(places.begin(), places.end(), begin);
    if (everyByte) {
        return places;
    }
    std::vector<int> chosen;
    std::ranges::sample(places, std::back_inserter(chosen), some,
                        std::mt19937(test_support::randomSeed(17)));
    return chosen;
}
