#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace soak {

using Clock = std::chrono::steady_clock;

/// What became of the calls of one database object.
struct CallFigures {
    std::int64_t calls = 0;
    std::int64_t acknowledged = 0;
    std::int64_t thrown = 0;
    std::chrono::milliseconds longest{0};
    /// How often servers that it uses were killed.
    int kills = 0;
    /// Which call after the servers were back was the first to work (1 is the first), and how often
    /// it was that one.
    std::map<int, int> callsUntilWorking;
    /// How often none worked, or nothing could be read, for as long as was waited.
    int stayedBroken = 0;
    /// What was thrown, without its numbers, and how often.
    std::map<std::string, std::int64_t> failures;
};

/// Notes the calls that one thread makes of one database object, while another thread kills the
/// servers and asks when the object works again.
class CallLog {
public:
    /// The text of what the call threw, if it did.
    void note(Clock::time_point begin, Clock::time_point end,
              const std::optional<std::string>& failure);

    /// From now on all servers serve: calls that begin later are counted until one works.
    void serversAreBack();
    bool works() const;
    /// Nobody waits for it any longer.
    void giveUp();

    CallFigures figures() const;

private:
    mutable std::mutex m_mutex;
    CallFigures m_figures;
    std::optional<Clock::time_point> m_backSince;
    int m_callsSince = 0;
};

} // namespace soak
