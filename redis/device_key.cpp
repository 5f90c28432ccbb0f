#include "redis/device_key.h"

#include "redis/text.h"

#include <QStringList>

#include <array>
#include <charconv>
#include <limits>
#include <optional>

namespace redis {

namespace {

std::optional<int> ordinaryDeviceOf(const QByteArray& key) {
    constexpr int maxDigits = 9;
    const int colon = key.lastIndexOf(':');
    const int digits = key.size() - colon - 1;
    if (digits < 1 || digits > maxDigits || key.contains('\0')) {
        return std::nullopt;
    }
    int device = 0;
    for (int at = colon + 1; at < key.size(); ++at) {
        const char digit = key[at];
        if (digit < '0' || digit > '9') {
            return std::nullopt;
        }
        device = 10 * device + (digit - '0');
    }
    return device;
}

} // namespace

QByteArray deviceKey(const QByteArray& start, int device) {
    std::array<char, std::numeric_limits<int>::digits10 + 2> digits{};
    char* const end = std::to_chars(digits.begin(), digits.end(), device).ptr;
    const auto size = static_cast<int>(end - digits.begin());
    QByteArray key;
    key.reserve(start.size() + size);
    return key.append(start).append(digits.data(), size);
}

int plainDeviceOf(const QByteArray& key) {
    return untilZero(key).split(QLatin1Char(':')).last().toInt();
}

int deviceOf(const QByteArray& key) {
    const auto device = ordinaryDeviceOf(key);
    return device ? *device : plainDeviceOf(key);
}

} // namespace redis
