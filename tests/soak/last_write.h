#pragma once

#include <algorithm>
#include <vector>

namespace soak {

/// Which value one place may hold where the last write wins: that of the last call that returned,
/// or that of a later one that threw, which may have been stored or not. Once read, it is known.
class LastWrite {
public:
    void note(int value, bool acknowledged) {
        if (acknowledged) {
            m_possible.clear();
        }
        m_possible.push_back(value);
    }

    /// False if it cannot hold this value.
    bool mayHold(int value) {
        if (std::find(m_possible.begin(), m_possible.end(), value) == m_possible.end()) {
            return false;
        }
        m_possible = {value};
        return true;
    }

private:
    std::vector<int> m_possible{0}; // nothing at first
};

} // namespace soak
