#pragma once

#include "host/command_line/record_options.h"
#include "host/command_line/times.h"
#include "host/session/session.h"

#include <list>

namespace host {

/// Which downlink commands a user wants to see.
struct CommandQuery {
    std::list<int> devices;
    Period period;
    /// Over all devices; 0 for all there are.
    int limit = usualLimit;
    /// Only those that are pending or wait for data.
    bool pending = false;
};

/// Shows them, newest first over all devices. Blocks on the server. Throws Failure if it does not
/// do its part.
void showCommands(const CommandQuery& query, Session& session);

} // namespace host
