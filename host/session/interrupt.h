#pragma once

namespace host {

/// While one lives, the first SIGINT or SIGTERM is only noted, for the work to end at its next step
/// and to account for what was done; the next one ends the program. One at a time. Afterwards both
/// signals end the program, whatever they did before.
class Interrupt {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    /// Whether the user, or the system, wants the work to end. For any thread.
    static bool requested();
};

} // namespace host
