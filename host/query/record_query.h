#pragma once

#include "host/command_line/record_options.h"
#include "host/command_line/times.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>
#include <list>

namespace host {

/// Which records a user wants to see.
struct RecordQuery {
    std::list<int> devices;
    Period period;
    /// The newest over all devices; 0 for all there are.
    int limit = usualLimit;
};

/// The options for devices and period. Gives the one for the limit.
CLI::Option* addQueryOptions(CLI::App& command, RecordQuery& query);

/// What a store is asked for, so that it is seen whether there is more than `limit`.
constexpr int limitToAsk(int limit) {
    return limit == 0 ? 0 : limit + 1;
}

/// Each once, in their order: a store that is asked for a device twice may answer twice.
template <class Value>
std::list<Value> eachOnce(const std::list<Value>& values) {
    std::list<Value> once;
    std::ranges::copy_if(values, std::back_inserter(once), [&](const Value& value) {
        return std::ranges::find(once, value) == once.end();
    });
    return once;
}

/// The store's filter for a query, as far as all kinds of records share it.
template <class Filter>
Filter filterFor(const RecordQuery& query) {
    Filter filter;
    filter.modem_ids = eachOnce(query.devices);
    filter.begin = query.period.begin;
    filter.end = query.period.end;
    filter.limit = limitToAsk(query.limit);
    return filter;
}

} // namespace host
