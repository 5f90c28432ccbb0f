#pragma once

#include "host/command_line/record_options.h"
#include "host/command_line/times.h"
#include "host/session/session.h"

#include <QString>

#include <list>

namespace host {

/// Which events a user wants to see.
struct EventQuery {
    std::list<int> devices;
    Period period;
    /// Empty for any text.
    std::list<QString> texts;
    /// Over all devices; 0 for all there are.
    int limit = usualLimit;
};

/// Shows them, newest first over all devices. Blocks on the server. Throws Failure if it does not
/// do its part.
void showEvents(const EventQuery& query, Session& session);

} // namespace host
