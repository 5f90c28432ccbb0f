#include "tests/soak/call_log.h"

#include <algorithm>
#include <regex>

namespace soak {

namespace {

/// Numbers (ports, times, lines) and the names of temporary folders would make one failure look
/// like many.
std::string withoutNumbers(const std::string& text) {
    static const std::regex changing("/tmp/[^/]*|[0-9]+");
    constexpr std::size_t enough = 160;
    return std::regex_replace(text, changing, "#").substr(0, enough);
}

} // namespace

void CallLog::note(Clock::time_point begin, Clock::time_point end,
                   const std::optional<std::string>& failure) {
    const std::lock_guard lock(m_mutex);
    ++m_figures.calls;
    ++(failure ? m_figures.thrown : m_figures.acknowledged);
    m_figures.longest = std::max(
        m_figures.longest, std::chrono::duration_cast<std::chrono::milliseconds>(end - begin));
    if (failure) {
        ++m_figures.failures[withoutNumbers(*failure)];
    }
    if (m_backSince && begin >= *m_backSince) {
        ++m_callsSince;
        if (!failure) {
            ++m_figures.callsUntilWorking[m_callsSince];
            m_backSince.reset();
        }
    }
}

void CallLog::serversAreBack() {
    const std::lock_guard lock(m_mutex);
    ++m_figures.kills;
    m_backSince = Clock::now();
    m_callsSince = 0;
}

bool CallLog::works() const {
    const std::lock_guard lock(m_mutex);
    return !m_backSince;
}

void CallLog::giveUp() {
    const std::lock_guard lock(m_mutex);
    ++m_figures.stayedBroken;
    m_backSince.reset();
}

CallFigures CallLog::figures() const {
    const std::lock_guard lock(m_mutex);
    return m_figures;
}

} // namespace soak
