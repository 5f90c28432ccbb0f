#pragma once

#include "host/command_line/exit_status.h"
#include "host/session/session.h"

namespace host {

struct BenchOptions {
    qint64 secs = 60;
    /// The user agrees to what it does to the servers.
    bool agreed = false;
};

/// Makes the operations of each store on devices of its own, for so long in all, and shows what
/// they took. Removes what it stored, also when it is interrupted or a store fails. Throws Failure
/// if a store cannot be opened, fails, or has other records of those devices.
ExitStatus runBench(const BenchOptions& options, Session& session);

} // namespace host
