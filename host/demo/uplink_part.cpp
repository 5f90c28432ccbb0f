#include "host/demo/demo_parts.h"
#include "host/demo/queries.h"
#include "host/records/record_text.h"

#include <QStringList>

#include <algorithm>
#include <functional>

namespace host {

namespace {

using Repository = interfaces::IULAPPMessageRepository;

/// One row for each message, newest first.
std::vector<QStringList> rowsOf(const Returned<model::message>& stored) {
    std::vector<model::message> messages;
    for (const auto& [device, ofDevice] : stored) {
        messages.insert(messages.end(), ofDevice.begin(), ofDevice.end());
    }
    std::ranges::stable_sort(messages, std::greater(), &model::message::timestamp);

    std::vector<QStringList> rows;
    rows.reserve(messages.size());
    for (const auto& message : messages) {
        rows.push_back({deviceText(message.modem_id), timeText(message.timestamp), message.tag,
                        QStringLiteral("%1 bytes").arg(message.payload.size()),
                        readingsText(message.data.object())});
    }
    return rows;
}

void readBack(Repository& repository, ReadBack<model::message>& messages, Console& console) {
    using model::filter_roll;
    using model::message;
    const auto ask = [&](const filter_roll& filter) { return repository.GetMessages(filter); };
    const auto filter = anyTime<filter_roll>(distinct(messages.written(), &message::modem_id));
    auto byDetection = filter;
    byDetection.by_time_detected = true;

    checkEach(messages, QStringLiteral("by device %1"), &message::modem_id, filter,
              &filter_roll::modem_ids, ask);
    checkPeriod(messages, QStringLiteral("by period"), &message::timestamp, filter, ask);
    checkPeriod(messages, QStringLiteral("by period of detection"), &message::time_detected,
                byDetection, ask);
    checkEach(messages, QStringLiteral("by tag \"%1\""), &message::tag, filter, &filter_roll::tags,
              ask);
    console.table({{QStringLiteral("Device")},
                   {QStringLiteral("Time (UTC)")},
                   {QStringLiteral("Tag")},
                   {QStringLiteral("Payload"), true},
                   {QStringLiteral("Readings")}},
                  rowsOf(*ask(filter)));
}

} // namespace

Part<model::message> uplinkPart(Repository& repository, const std::vector<model::message>& messages,
                                int rejected) {
    const auto filter = anyTime<model::filter_roll>(distinct(messages, &model::message::modem_id));
    Part<model::message> part;
    part.kind = QStringLiteral("uplink messages");
    part.heading = QStringLiteral("Uplink messages");
    part.remark = QStringLiteral("Assigned, since a telegram does not say: times (one minute "
                                 "apart), base stations, time zone and signal strengths.");
    part.records = messages;
    part.rejected = rejected;
    part.find = [&repository, filter] { return *repository.GetMessages(filter); };
    part.remove = [&repository, filter] { repository.DeleteMessages(filter); };
    part.store = [&repository](std::span<model::message> batch) {
        std::ranges::for_each(batch, [&](const auto& each) { repository.SaveMessage(each); });
    };
    part.readBack = std::bind_front(readBack, std::ref(repository));
    return part;
}

} // namespace host
