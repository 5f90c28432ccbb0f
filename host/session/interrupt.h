#pragma once

namespace host {

/// While one lives, the first SIGINT or SIGTERM is only noted, for the work to end at its next step
/// and to account for what was done; the next one ends the program. One at a time.
class Interrupt {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /// Whether the user, or the system, wants the work to end.
    static bool requested();
};

} // namespace host
