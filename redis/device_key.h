#pragma once

#include <QByteArray>

namespace redis {

/// The key of a device: `start`, and its number after that.
QByteArray deviceKey(const QByteArray& start, int device);

/// The number after the last colon of a key, as Qt reads it in the text up to the first zero byte;
/// 0 if it is none.
int plainDeviceOf(const QByteArray& key);

/// The same; directly, if the key is ordinary: no zero byte, and up to nine digits at the end.
int deviceOf(const QByteArray& key);

} // namespace redis
