#include "host/records/demo_mark.h"

#include <algorithm>

namespace host {

namespace {

constexpr qint64 lifetimeSecs = 43'200;

QString sourceKey() {
    return QStringLiteral("source");
}

bool isMarkedQueue(const model::dl_queues::queue& queue) {
    return !queue.elements.isEmpty() &&
           std::ranges::all_of(queue.elements,
                               [](const auto& element) { return isMarked(element.data); });
}

} // namespace

QString demoSource() {
    return QStringLiteral("kelvro-host demo");
}

QJsonObject marked(QJsonObject members) {
    members.insert(sourceKey(), demoSource());
    return members;
}

bool isMarked(const QJsonObject& members) {
    return members.value(sourceKey()).toString() == demoSource();
}

bool isDemos(const model::dl_message& command) {
    return command.api_key == demoSource();
}
bool isDemos(const DeviceState& state) {
    return isMarked(state.values);
}
bool isDemos(const DeviceQueues& record) {
    const auto& queues = record.queues.dl;
    return !queues.isEmpty() &&
           std::ranges::all_of(queues, [](const auto& queue) { return isMarkedQueue(queue); });
}
bool isDemos(const DeviceEntry& entry) {
    return entry.clients.contains(demoSource());
}

QDateTime expiry(const QDateTime& start) {
    return start.addSecs(lifetimeSecs);
}

} // namespace host
