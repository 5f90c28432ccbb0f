#pragma once

#include "host/query/record_query.h"
#include "host/session/session.h"

#include <QString>

#include <list>

namespace host {

/// Which uplinks a user wants to see.
struct UplinkQuery : RecordQuery {
    /// Empty for any tag. The store does not read them where the period is of the detection.
    std::list<QString> tags;
    /// The period, and the order, are of the time when a base station heard the uplink.
    bool detected = false;
};

/// Shows them, newest first over all devices. Blocks on the server. Throws Failure if it does not
/// do its part.
void showUplinks(const UplinkQuery& query, Session& session);

} // namespace host
