#pragma once

#include <QByteArray>
#include <QString>

namespace redis {

/// Text up to the first zero byte.
inline QString untilZero(const QByteArray& utf8) {
    return QString::fromUtf8(utf8.constData());
}

} // namespace redis
