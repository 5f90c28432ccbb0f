#pragma once

#include "host/command_line/exit_status.h"
#include "host/session/session.h"

#include <list>

namespace host {

struct WatchOptions {
    std::list<int> devices;
    qint64 everySecs = 2;
};

/// Shows the newest records of the devices on the whole terminal until a key, or a signal, ends it.
/// WronglyCalled if there is no terminal. Throws Failure if the plug-in cannot be loaded; a server
/// that is away is shown.
ExitStatus runWatch(const WatchOptions& options, Session& session);

} // namespace host
