#pragma once

namespace host {

/// What the program tells the shell.
enum class ExitStatus : int {
    Done = 0,
    /// Something failed, or records were rejected.
    Failed = 1,
    WronglyCalled = 2,
};

} // namespace host
