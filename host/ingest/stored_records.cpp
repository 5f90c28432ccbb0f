#include "host/ingest/stored_records.h"

#include "host/records/filters.h"

#include <algorithm>
#include <set>
#include <utility>

namespace host {

namespace {

/// A request for records of these devices and this period that brings more besides is not worth it.
constexpr int strangersAllowed = 1000;

template <class Record, class Ask>
auto find(const std::list<Record>& wanted, Ask ask) {
    std::map<decltype(keyOf(std::declval<Record>())), Record> found;
    if (wanted.empty()) {
        return found;
    }
    std::set<std::pair<int, qint64>> places;
    std::set<int> devices;
    for (const auto& record : wanted) {
        places.emplace(record.modem_id, record.timestamp.toSecsSinceEpoch());
        devices.insert(record.modem_id);
    }
    const auto request = [&](model::filter_eav filter, qint64 firstSecs, qint64 lastSecs) {
        filter.begin = QDateTime::fromSecsSinceEpoch(firstSecs, Qt::UTC);
        filter.end = QDateTime::fromSecsSinceEpoch(lastSecs, Qt::UTC);
        int count = 0;
        const auto answer = ask(filter);
        for (const auto& [device, records] : *answer) {
            for (const auto& record : records) {
                found.emplace(keyOf(record), record);
                ++count;
            }
        }
        return count;
    };

    auto filter = anyTime<model::filter_eav>({devices.begin(), devices.end()});
    filter.limit = static_cast<int>(wanted.size()) * 2 + strangersAllowed;
    const auto second = [](const std::pair<int, qint64>& place) { return place.second; };
    if (request(filter, std::ranges::min(places, {}, second).second,
                std::ranges::max(places, {}, second).second) < filter.limit) {
        return found;
    }
    for (const auto& [device, secs] : places) {
        request(anyTime<model::filter_eav>({device}), secs, secs);
    }
    return found;
}

} // namespace

ValueKey keyOf(const model::dev_value& value) {
    return {value.modem_id, value.timestamp.toSecsSinceEpoch(), value.obis_code, value.message_id};
}

EventKey keyOf(const model::dev_event& event) {
    return {event.modem_id, event.timestamp.toSecsSinceEpoch(), event.event_code, event.message_id,
            event.message};
}

std::map<ValueKey, model::dev_value> findStored(interfaces::IEAVRepository& repository,
                                                const std::list<model::dev_value>& values) {
    return find(values, [&](const auto& filter) { return repository.GetValues(filter); });
}

std::map<EventKey, model::dev_event> findStored(interfaces::IEAVRepository& repository,
                                                const std::list<model::dev_event>& events) {
    return find(events, [&](const auto& filter) { return repository.GetEvents(filter); });
}

std::optional<QDateTime> storedTime(interfaces::IULAPPMessageRepository& repository, int device,
                                    quint64 uniqueNumber) {
    auto filter = anyTime<model::filter_roll>({device});
    filter.by_time_detected = false;
    filter.limit = 256;
    for (;;) {
        const auto answer = repository.GetMessages(filter);
        const auto& messages = (*answer)[device];
        const auto message = std::ranges::find(messages, uniqueNumber, &model::message::unique_id);
        if (message != messages.end()) {
            return message->timestamp.toUTC();
        }
        if (std::cmp_less(messages.size(), filter.limit)) {
            return {};
        }
        if (messages.back().timestamp == filter.end) {
            // All of one second.
            filter.limit *= 2;
        }
        filter.end = messages.back().timestamp;
    }
}

} // namespace host
