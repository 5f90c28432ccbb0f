#pragma once

#include "host/query/record_query.h"
#include "host/session/session.h"

namespace host {

/// Which downlink commands a user wants to see.
struct CommandQuery : RecordQuery {
    /// Only those that are pending or wait for data.
    bool pending = false;
};

/// Shows them, newest first over all devices. Blocks on the server. Throws Failure if it does not
/// do its part.
void showCommands(const CommandQuery& query, Session& session);

} // namespace host
