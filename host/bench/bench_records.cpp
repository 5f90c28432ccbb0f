#include "host/bench/bench_records.h"

#include <QDateTime>
#include <QJsonDocument>

#include <algorithm>

namespace host {

namespace {

constexpr qint64 lifetimeSecs = 3600;

QString source() {
    return QStringLiteral("kelvro-host bench");
}

QJsonObject mark() {
    return {{QStringLiteral("source"), source()}};
}

bool isMarked(const QJsonObject& members) {
    return members.value(QLatin1String("source")).toString() == source();
}

QDateTime now() {
    return QDateTime::currentDateTimeUtc();
}

/// As that of a meter for heat.
QJsonObject readings() {
    return {{QStringLiteral("total_energy_consumption_kwh"), 12345.6},
            {QStringLiteral("power_kw"), 4.2},
            {QStringLiteral("flow_temperature_c"), 68.25},
            {QStringLiteral("return_temperature_c"), 41.5},
            {QStringLiteral("status"), QStringLiteral("OK")}};
}

} // namespace

std::list<int> benchDevices() {
    std::list<int> devices;
    for (int i = 0; i < benchDeviceCount; ++i) {
        devices.push_back(firstBenchDevice + i);
    }
    return devices;
}

model::message benchMessage(int device, quint64 number) {
    model::message message;
    message.modem_id = device;
    message.unique_id = number;
    message.timestamp = now();
    message.time_detected = message.timestamp;
    message.ttl = message.timestamp.addSecs(lifetimeSecs);
    message.phy = QStringLiteral("868 MHz");
    message.tag = QStringLiteral("heat");
    message.data = QJsonDocument(readings());
    message.extended_data = QJsonDocument(mark());
    message.parse_status = QStringLiteral("ok");
    message.hw_type = QStringLiteral("bench");
    message.protocol = QStringLiteral("wM-Bus");
    message.payload = QByteArray(80, '\x2f');
    return message;
}

model::dl_message benchCommand(int device) {
    model::dl_message command;
    command.modem_id = device;
    command.timeout = 60;
    command.timestamp = now();
    command.ttl = command.timestamp.addSecs(lifetimeSecs);
    command.api_key = source();
    command.data = {{QStringLiteral("request"), QStringLiteral("read registers")}};
    command.payload = QByteArray(16, '\x2f');
    return command;
}

std::list<model::dev_value> benchValues(int device, int count) {
    model::dev_value value;
    value.modem_id = device;
    value.timestamp = now();
    value.ttl = value.timestamp.addSecs(lifetimeSecs);
    value.obis_code = QStringLiteral("6-0:1.0.0");
    value.tag = QStringLiteral("heat");
    value.extended_data = QJsonDocument(mark());
    value.value = 12345.6;
    return std::list<model::dev_value>(static_cast<std::size_t>(count), value);
}

std::list<model::dev_event> benchEvents(int device, int count) {
    model::dev_event event;
    event.modem_id = device;
    event.timestamp = now();
    event.ttl = event.timestamp.addSecs(lifetimeSecs);
    event.event_code = 1;
    event.message = QStringLiteral("LEAK");
    event.extended_data = QJsonDocument(mark());
    return std::list<model::dev_event>(static_cast<std::size_t>(count), event);
}

QJsonObject benchState() {
    auto state = mark();
    state.insert(QStringLiteral("key"), QStringLiteral("00112233445566778899aabbccddeeff"));
    return state;
}

model::dl_queues benchQueues() {
    model::dl_queues::element element;
    element.data = mark();
    element.type = QStringLiteral("command");
    model::dl_queues::queue queue;
    queue.elements.insert(QStringLiteral("1"), element);
    model::dl_queues queues;
    queues.dl.insert(QStringLiteral("bench"), queue);
    return queues;
}

bool isBenchs(const model::message& message) {
    return isMarked(message.extended_data.object());
}
bool isBenchs(const model::dl_message& command) {
    return command.api_key == source();
}
bool isBenchs(const model::dev_value& value) {
    return isMarked(value.extended_data.object());
}
bool isBenchs(const model::dev_event& event) {
    return isMarked(event.extended_data.object());
}
bool isBenchs(const QJsonObject& state) {
    return state.isEmpty() || isMarked(state);
}
bool isBenchs(const model::dl_queues& queues) {
    return std::ranges::all_of(queues.dl, [](const auto& queue) {
        return std::ranges::all_of(queue.elements,
                                   [](const auto& element) { return isMarked(element.data); });
    });
}

} // namespace host
