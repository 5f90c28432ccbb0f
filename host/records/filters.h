#pragma once

#include <QDateTime>

#include <algorithm>
#include <list>
#include <set>
#include <vector>

namespace host {

/// The first and the last time that a query can ask for.
inline QDateTime beginOfTime() {
    return QDateTime::fromSecsSinceEpoch(0, Qt::UTC);
}
inline QDateTime endOfTime() {
    return QDateTime(QDate(9999, 12, 31), QTime(23, 59, 59), Qt::UTC);
}

/// Everything of the devices, whenever it was.
template <class Filter>
Filter anyTime(std::list<int> devices) {
    Filter filter;
    filter.modem_ids = std::move(devices);
    filter.begin = beginOfTime();
    filter.end = endOfTime();
    return filter;
}

/// What the records have in one member, each value once, in order.
template <class Record, class Value>
std::list<Value> distinct(const std::vector<Record>& records, Value Record::* member) {
    std::set<Value> values;
    for (const auto& record : records) {
        values.insert(record.*member);
    }
    return {values.begin(), values.end()};
}

} // namespace host
