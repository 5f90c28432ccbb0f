#include "host/query/latest_values.h"

#include <QString>

#include <algorithm>
#include <iterator>
#include <map>

namespace host {

std::vector<model::dev_value> latestOfEachCode(const std::list<model::dev_value>& newestFirst) {
    std::map<QString, const model::dev_value*> byCode;
    for (const auto& value : newestFirst) {
        byCode.try_emplace(value.obis_code, &value);
    }
    std::vector<model::dev_value> latest;
    std::ranges::transform(byCode, std::back_inserter(latest),
                           [](const auto& entry) { return *entry.second; });
    return latest;
}

} // namespace host
