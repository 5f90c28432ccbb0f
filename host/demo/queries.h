#pragma once

#include "host/check/read_back.h"
#include "host/records/filters.h"

#include <QDateTime>
#include <QString>

#include <algorithm>
#include <list>
#include <vector>

namespace host {

inline constexpr auto everyRecord = [](const auto& /*record*/) { return true; };

/// Checks one query for each value of a member: `filter` with only that value as its condition.
template <class Record, class Value, class Filter, class Ask>
void checkEach(ReadBack<Record>& records, const QString& query, Value Record::* member,
               Filter filter, std::list<Value> Filter::* condition, Ask ask) {
    for (const auto& value : distinct(records.written(), member)) {
        filter.*condition = {value};
        records.check(
            query.arg(value), [&](const Record& record) { return record.*member == value; },
            *ask(filter));
    }
}

/// Checks the query for the middle half of the records; both ends of the period are the times of a
/// record, so that a store which leaves an end out is found out.
template <class Record, class Filter, class Ask>
void checkPeriod(ReadBack<Record>& records, const QString& query, QDateTime Record::* time,
                 Filter filter, Ask ask) {
    std::vector<QDateTime> times;
    for (const auto& record : records.written()) {
        times.push_back(record.*time);
    }
    std::ranges::sort(times);
    filter.begin = times[times.size() / 4];
    filter.end = times[times.size() * 3 / 4];
    records.check(
        query,
        [&](const Record& record) {
            return record.*time >= filter.begin && record.*time <= filter.end;
        },
        *ask(filter));
}

} // namespace host
