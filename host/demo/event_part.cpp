#include "host/demo/demo_parts.h"
#include "host/demo/queries.h"
#include "host/records/event_builder.h"
#include "host/records/record_text.h"

#include <QStringList>

#include <functional>

namespace host {

namespace {

using Repository = interfaces::IEAVRepository;

std::vector<QStringList> rowsOf(const Returned<model::dev_event>& stored) {
    std::vector<QStringList> rows;
    for (const auto& [device, events] : stored) {
        for (const auto& event : events) {
            const bool isStatus = event.event_code == static_cast<int>(EventCode::Status);
            rows.push_back({deviceText(device), timeText(event.timestamp),
                            isStatus ? QStringLiteral("status") : QStringLiteral("error flag"),
                            event.message});
        }
    }
    return rows;
}

void readBack(Repository& repository, ReadBack<model::dev_event>& events, Console& console) {
    using model::dev_event;
    using model::filter_eav;
    const auto ask = [&](const filter_eav& filter) { return repository.GetEvents(filter); };
    const auto filter = anyTime<filter_eav>(distinct(events.written(), &dev_event::modem_id));

    checkEach(events, QStringLiteral("by device %1"), &dev_event::modem_id, filter,
              &filter_eav::modem_ids, ask);
    checkPeriod(events, QStringLiteral("by period"), &dev_event::timestamp, filter, ask);
    checkEach(events, QStringLiteral("by text %1"), &dev_event::message, filter, &filter_eav::tags,
              ask);
    console.table({{QStringLiteral("Device")},
                   {QStringLiteral("Time (UTC)")},
                   {QStringLiteral("Kind")},
                   {QStringLiteral("Event")}},
                  rowsOf(*ask(filter)));
}

} // namespace

Part<model::dev_event> eventPart(Repository& repository,
                                 const std::vector<model::message>& messages) {
    const auto filter = anyTime<model::filter_eav>(distinct(messages, &model::message::modem_id));
    Part<model::dev_event> part;
    part.kind = QStringLiteral("events");
    part.origin = QLatin1String("found");
    part.heading = QStringLiteral("Status changes");
    part.records = findEvents(messages);
    part.find = [&repository, filter] { return *repository.GetEvents(filter); };
    part.remove = [&repository, filter] { repository.DeleteEvents(filter); };
    part.store = [&repository](std::span<model::dev_event> batch) {
        repository.SaveEvents({batch.begin(), batch.end()});
    };
    part.batchSize = 500;
    part.readBack = std::bind_front(readBack, std::ref(repository));
    return part;
}

} // namespace host
