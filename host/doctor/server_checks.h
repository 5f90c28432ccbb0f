#pragma once

#include "host/doctor/finding.h"

#include <QString>

#include <functional>

/// What is looked at in every server.
namespace host {

/// The median of the times that a few requests take.
Finding roundTripFinding(const QString& server, const std::function<void()>& request);

/// Compares a server's clock with this machine's. `serverMsecs` is what the server said between
/// `beforeMsecs` and `afterMsecs` of this machine's time, all in milliseconds since the epoch.
Finding clockFinding(const QString& server, qint64 serverMsecs, qint64 beforeMsecs,
                     qint64 afterMsecs);

/// A length of time for people: "3 s", "12 min", "5 h", "8 days".
QString duration(qint64 secs);

} // namespace host
