#pragma once

#include <QDateTime>
#include <QJsonObject>

#include <cstdint>

/// The times of the stored documents that are read through JSON text, and of all when written.
namespace bson_utils {

/// Seconds as stores in the field hold them: Qt's unsigned 32-bit count widened, so that a null
/// date-time, one before 1970 (but for the last second of 1969) and one after 2106 all become
/// 4294967295.
inline std::int64_t storedSecs(const QDateTime& time) {
    return time.toTime_t();
}

inline QDateTime utcSecs(int secs) {
    return QDateTime::fromSecsSinceEpoch(secs, Qt::UTC);
}

/// The local time of a date in legacy extended JSON, {"$date": UTC milliseconds}; the epoch if it
/// is none.
inline QDateTime localMsecs(const QJsonObject& date) {
    constexpr double limit = 9223372036854775808.0; // 2^63; conversion from there on is undefined
    const double msecs = date.value(QLatin1String("$date")).toDouble();
    if (msecs >= limit) {
        return QDateTime::fromMSecsSinceEpoch(INT64_MAX);
    }
    return QDateTime::fromMSecsSinceEpoch(msecs < -limit ? INT64_MIN : static_cast<qint64>(msecs));
}

} // namespace bson_utils
