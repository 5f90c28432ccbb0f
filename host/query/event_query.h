#pragma once

#include "host/query/record_query.h"
#include "host/session/session.h"

#include <QString>

#include <list>

namespace host {

/// Which events a user wants to see.
struct EventQuery : RecordQuery {
    /// Empty for any text.
    std::list<QString> texts;
};

/// Shows them, newest first over all devices. Blocks on the server. Throws Failure if it does not
/// do its part.
void showEvents(const EventQuery& query, Session& session);

} // namespace host
