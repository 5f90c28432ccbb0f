#include "host/events_demo.h"

#include "host/demo_mark.h"
#include "host/event_builder.h"
#include "host/failure.h"
#include "host/read_back.h"

#include <QStringList>

#include <algorithm>
#include <set>

namespace host {

namespace {

using Repository = interfaces::IEAVRepository;
using Events = ReadBack<model::dev_event>;

model::filter_eav anyTime(std::list<int> devices) {
    model::filter_eav filter;
    filter.modem_ids = std::move(devices);
    filter.begin = beginOfTime();
    filter.end = endOfTime();
    return filter;
}

void deleteEarlierDemo(Repository& repository, const std::vector<model::message>& messages,
                       Console& console) {
    std::set<int> devices;
    for (const auto& message : messages) {
        devices.insert(message.modem_id);
    }
    const auto filter = anyTime({devices.begin(), devices.end()});
    const auto stored = repository.GetEvents(filter);
    std::size_t count = 0;
    for (const auto& [device, events] : *stored) {
        if (!std::ranges::all_of(events,
                                 [](const auto& event) { return isMarked(event.extended_data); })) {
            throw Failure(QStringLiteral("the store holds events of device %1 that no demo wrote; "
                                         "the demo would have to delete them and does not run")
                              .arg(device));
        }
        count += events.size();
    }
    if (count != 0) {
        repository.DeleteEvents(filter);
        console.line(QStringLiteral("Deleted %1 events of an earlier demo.").arg(count));
    }
}

void checkByDevice(Repository& repository, int device, Events& events) {
    events.check(
        QStringLiteral("by device %1").arg(device),
        [device](const model::dev_event& event) { return event.modem_id == device; },
        *repository.GetEvents(anyTime({device})));
}

void checkByText(Repository& repository, const std::list<int>& devices, const QString& text,
                 Events& events) {
    auto filter = anyTime(devices);
    filter.tags = {text};
    events.check(
        QStringLiteral("by text ") + text,
        [&text](const model::dev_event& event) { return event.message == text; },
        *repository.GetEvents(filter));
}

/// Asks for the middle half of the events and returns what came.
void checkByPeriod(Repository& repository, const std::list<int>& devices, Events& events) {
    const auto& written = events.written();
    auto filter = anyTime(devices);
    filter.begin = written[written.size() * 3 / 4].timestamp;
    filter.end = written[written.size() / 4].timestamp;
    events.check(
        QStringLiteral("by period"),
        [&filter](const model::dev_event& event) {
            return event.timestamp >= filter.begin && event.timestamp <= filter.end;
        },
        *repository.GetEvents(filter));
}

void show(const std::map<int, std::list<model::dev_event>>& stored, Console& console) {
    std::vector<QStringList> rows;
    for (const auto& [device, events] : stored) {
        for (const auto& event : events) {
            rows.push_back({QStringLiteral("%1").arg(device, 8, 10, QLatin1Char('0')),
                            event.timestamp.toUTC().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")),
                            event.event_code == static_cast<int>(EventCode::Status)
                                ? QStringLiteral("status")
                                : QStringLiteral("error flag"),
                            event.message});
        }
    }
    console.table({{QStringLiteral("Device")},
                   {QStringLiteral("Time (UTC)")},
                   {QStringLiteral("Kind")},
                   {QStringLiteral("Event")}},
                  rows);
}

} // namespace

Accounting runEventsDemo(Repository& repository, const std::vector<model::message>& messages,
                         Console& console) {
    deleteEarlierDemo(repository, messages, console);
    Events events(findEvents(messages));
    const auto& written = events.written();
    const auto count = static_cast<int>(written.size());
    if (written.empty()) {
        console.line(QStringLiteral("The telegrams tell of no status change."));
        return events.accounting(count, 0);
    }

    repository.SaveEvents({written.begin(), written.end()});
    events.countStored(count);

    std::set<int> devices;
    std::set<QString> texts;
    for (const auto& event : written) {
        devices.insert(event.modem_id);
        texts.insert(event.message);
    }
    const std::list<int> deviceList(devices.begin(), devices.end());
    for (const int device : devices) {
        checkByDevice(repository, device, events);
    }
    checkByPeriod(repository, deviceList, events);
    for (const auto& text : texts) {
        checkByText(repository, deviceList, text, events);
    }
    show(*repository.GetEvents(anyTime(deviceList)), console);
    console.complaints(events.complaints());
    return events.accounting(count, 0);
}

} // namespace host
