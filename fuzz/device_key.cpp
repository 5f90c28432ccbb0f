// The devices in the keys that a server lists: read directly, and as it is defined.

#include "redis/device_key.h"
#include "fuzz/support/choices.h"
#include "fuzz/support/target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text = fuzz::textOf(data, size);
    const QByteArray key(text.data(), static_cast<int>(text.size()));
    const int device = redis::deviceOf(key);
    fuzz::require(device == redis::plainDeviceOf(key), "the device is that of the plain way");
    fuzz::require(redis::deviceOf(redis::deviceKey(QByteArray(key).append(':'), device)) ==
                          device ||
                      key.contains('\0'),
                  "a device comes back from its key");
    return 0;
}
