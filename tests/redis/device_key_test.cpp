// Reading the device out of a key directly against reading it by way of Qt's text. The seed is
// fixed, or taken from KELVRO_SEED; a failure prints it.

#include "redis/device_key.h"
#include "tests/support/random_seed.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <random>
#include <string>

namespace {

using redis::deviceKey;
using redis::deviceOf;
using redis::plainDeviceOf;

constexpr std::uint32_t keys = 50'000;

std::uint32_t firstSeed() {
    return test_support::randomSeed(20221128);
}

/// Mostly digits and colons, now and then what makes a decoder stumble.
QByteArray randomKey(std::uint32_t seed) {
    std::mt19937 engine(seed);
    const auto below = [&](int limit) {
        return static_cast<int>(engine() % static_cast<std::uint32_t>(limit));
    };
    const QByteArray usual("0123456789::");
    const QByteArray odd("\0\xC3\xA9\xE2\xF0\x9F\xED\xA0\xEF\xBB\xBF\xFF+- x\t", 17);
    const bool isOdd = below(2) == 0;
    QByteArray key;
    for (int rest = below(24); rest > 0; --rest) {
        const QByteArray& from = isOdd && below(4) == 0 ? odd : usual;
        key += from.at(below(from.size()));
    }
    return key;
}

TEST(DeviceOfAKey, IsWhatQtReadsInItsText) {
    std::uint32_t numbers = 0;
    for (std::uint32_t seed = firstSeed(); seed < firstSeed() + keys; ++seed) {
        const QByteArray key = randomKey(seed);
        ASSERT_EQ(deviceOf(key), plainDeviceOf(key))
            << "seed " << seed << ": " << key.toHex(' ').toStdString();
        numbers += deviceOf(key) != 0 ? 1 : 0;
    }
    EXPECT_GT(numbers, keys / 4) << "hardly anything was compared";
}

TEST(DeviceOfAKey, IsTheNumberAfterTheLastColon) {
    EXPECT_EQ(deviceOf("a:b:17"), 17);
    EXPECT_EQ(deviceOf("a:999999999"), 999'999'999);
    EXPECT_EQ(deviceOf("a:2147483647"), 2'147'483'647);
    EXPECT_EQ(deviceOf("a:b"), 0);
    EXPECT_EQ(deviceOf(":5"), 5);
    EXPECT_EQ(deviceOf("5"), 5);
    EXPECT_EQ(deviceOf(""), 0);
    EXPECT_EQ(deviceOf(QByteArray("a:7\0:9", 6)), 7);
}

TEST(KeyOfADevice, EndsWithItsNumber) {
    for (const int device :
         {0, 7, -4, 1'000'000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        const QByteArray key = deviceKey("a:", device);
        EXPECT_EQ(key.toStdString(), "a:" + std::to_string(device));
        EXPECT_EQ(deviceOf(key), device);
    }
}

} // namespace
