#include "host/input/line_time.h"

#include "host/input/record_file.h"

#include <cmath>

namespace host {

qint64 parseSecs(const QJsonValue& value) {
    constexpr double lastSecs = 253402300799.0;
    if (!value.isDouble()) {
        throw Rejection{QStringLiteral("no \"time\" number")};
    }
    const double secs = value.toDouble();
    if (std::trunc(secs) != secs || secs < 0.0 || secs > lastSecs) {
        throw Rejection{QStringLiteral("the time is not a number of whole seconds since 1970")};
    }
    return static_cast<qint64>(secs);
}

} // namespace host
