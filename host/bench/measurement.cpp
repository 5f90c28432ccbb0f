#include "host/bench/measurement.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace host {

double Measurement::recordRate() const {
    const auto total = std::accumulate(msecs.begin(), msecs.end(), 0.0);
    return total > 0.0 ? static_cast<double>(records) * 1000.0 / total : 0.0;
}

double Measurement::percentileMsecs(double part) const {
    if (msecs.empty()) {
        return 0.0;
    }
    auto sorted = msecs;
    std::ranges::sort(sorted);
    const auto rank =
        static_cast<std::size_t>(std::ceil(part * static_cast<double>(sorted.size())));
    return sorted.at(std::max<std::size_t>(rank, 1) - 1);
}

} // namespace host
