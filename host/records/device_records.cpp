#include "host/records/device_records.h"

#include "host/records/demo_mark.h"

#include <map>

namespace host {

namespace {

using Status = enum model::dl_queues::status;

/// The newest message of each device.
std::map<int, model::message> newest(const std::vector<model::message>& messages) {
    std::map<int, model::message> byDevice;
    for (const auto& message : messages) {
        const auto known = byDevice.find(message.modem_id);
        if (known == byDevice.end() || known->second.timestamp < message.timestamp) {
            byDevice.insert_or_assign(message.modem_id, message);
        }
    }
    return byDevice;
}

model::dl_queues::element makeElement(const QString& request, int place) {
    model::dl_queues::element element;
    element.data = marked({{QStringLiteral("request"), request}});
    element.type = QStringLiteral("command");
    element.db_id = QStringLiteral("%1").arg(place, 24, 16, QLatin1Char('0'));
    element.status = place == 0 ? Status::WAIT : Status::NONE;
    element.repeat = 3 - place;
    return element;
}

} // namespace

std::vector<DeviceState> buildStates(const std::vector<model::message>& messages) {
    std::vector<DeviceState> states;
    for (const auto& [device, message] : newest(messages)) {
        const QJsonObject radio{{QStringLiteral("rssi"), message.rssi},
                                {QStringLiteral("snr"), message.snr}};
        states.push_back(
            {device, marked({{QStringLiteral("lastSeenSecs"),
                              static_cast<double>(message.timestamp.toSecsSinceEpoch())},
                             {QStringLiteral("payloadBytes"), message.payload.size()},
                             {QStringLiteral("filling"), message.payload.size() / 255.0},
                             {QStringLiteral("tag"), message.tag},
                             {QStringLiteral("radio"), radio}})});
    }
    return states;
}

std::vector<DeviceQueues> buildQueues(const std::vector<model::message>& messages) {
    std::vector<DeviceQueues> all;
    for (const auto& [device, message] : newest(messages)) {
        model::dl_queues::queue queue;
        queue.elements = {
            {QStringLiteral("first"), makeElement(QStringLiteral("set clock"), 0)},
            {QStringLiteral("second"), makeElement(QStringLiteral("read status"), 1)}};
        queue.repeat = 2;
        queue.timeout = 60;
        queue.start_from = message.snr;
        queue.status = Status::WAIT;

        model::dl_queues queues;
        queues.dl.insert(message.tag, queue);
        queues.lock = message.snr % 2 == 0;
        queues.status = Status::WAIT;
        all.push_back({device, queues});
    }
    return all;
}

std::vector<DeviceEntry> buildEntries(const std::vector<model::message>& messages) {
    std::vector<DeviceEntry> entries;
    for (const auto& [device, message] : newest(messages)) {
        entries.push_back({device,
                           {demoSource(), QStringLiteral("supplier of ") + message.tag},
                           message.protocol,
                           message.hw_type});
    }
    return entries;
}

bool isEmpty(const DeviceState& state) {
    return state.values.isEmpty();
}
bool isEmpty(const DeviceQueues& record) {
    const auto& queues = record.queues;
    return queues.dl.isEmpty() && !queues.lock && queues.status == Status::NONE;
}
bool isEmpty(const DeviceEntry& entry) {
    return entry.clients.empty() && entry.protocol.isEmpty() && entry.hw_type.isEmpty();
}

} // namespace host
