#include "host/doctor/server_checks.h"

#include <QElapsedTimer>

#include <algorithm>
#include <array>
#include <cstdlib>

namespace host {

Finding roundTripFinding(const QString& server, const std::function<void()>& request) {
    constexpr double slowMsecs = 50;
    std::array<double, 7> msecs{};
    for (auto& each : msecs) {
        QElapsedTimer timer;
        timer.start();
        request();
        each = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    }
    std::ranges::nth_element(msecs, msecs.begin() + msecs.size() / 2);
    const auto median = msecs.at(msecs.size() / 2);
    Finding finding{
        .subject = QStringLiteral("round trip to %1").arg(server),
        .found = QStringLiteral("%1 ms (median of %2)").arg(median, 0, 'f', 2).arg(msecs.size()),
        .details = {{QStringLiteral("round_trip_ms"), median}}};
    if (median > slowMsecs) {
        finding.severity = Severity::Note;
        finding.advice = QStringLiteral("every call of the plug-in takes at least that long");
    }
    return finding;
}

Finding clockFinding(const QString& server, qint64 serverMsecs, qint64 beforeMsecs,
                     qint64 afterMsecs) {
    constexpr qint64 noticed = 2'000;
    constexpr qint64 tooMuch = 30'000;
    // Whatever lies between the two may be the same instant.
    const auto ahead = serverMsecs - std::clamp(serverMsecs, beforeMsecs, afterMsecs);
    const auto apart = std::abs(ahead);
    Finding finding{.subject = QStringLiteral("clock of %1").arg(server),
                    .found = QStringLiteral("agrees with this machine's"),
                    .details = {{QStringLiteral("ahead_ms"), ahead}}};
    if (apart > noticed) {
        finding.severity = apart > tooMuch ? Severity::Warning : Severity::Note;
        finding.found = QStringLiteral("%1 %2 this machine's")
                            .arg(duration(apart / 1000),
                                 ahead > 0 ? QStringLiteral("ahead of") : QStringLiteral("behind"));
        finding.advice = QStringLiteral("set both by one time server (chrony, systemd-timesyncd): "
                                        "the server's clock decides when documents go");
    }
    return finding;
}

QString duration(qint64 secs) {
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    constexpr qint64 day = 24 * hour;
    if (secs < 2 * minute) {
        return QStringLiteral("%1 s").arg(secs);
    }
    if (secs < 2 * hour) {
        return QStringLiteral("%1 min").arg(secs / minute);
    }
    if (secs < 2 * day) {
        return QStringLiteral("%1 h").arg(secs / hour);
    }
    return QStringLiteral("%1 days").arg(secs / day);
}

} // namespace host
