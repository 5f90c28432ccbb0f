#include "host/device/downlink_queue.h"

#include "host/check/attempt.h"
#include "host/input/settings.h"
#include "host/records/device_records.h"
#include "interfaces/idriver_dl_queue.h"

#include <array>

namespace host {

namespace {

QString what(const char* doing, int device, Session& session) {
    return QStringLiteral("%1 the downlink queues of device %2 at %3 and %4")
        .arg(QLatin1String(doing))
        .arg(device)
        .arg(serverName(session.settings()), redisName(session.settings()));
}

DeviceQueues pull(int device, Session& session) {
    auto& queues = *session.states().DLqueue();
    return {device, attempt(what("reading", device, session), [&] { return queues.Pull(device); })};
}

QJsonValue statusCell(enum model::dl_queues::status status) {
    static const std::array<QString, 4> names{QStringLiteral("NONE"), QStringLiteral("DONE"),
                                              QStringLiteral("WAIT"), QStringLiteral("FAIL")};
    // Queues are stored with the names, so there is no other number.
    return names.at(static_cast<std::size_t>(status));
}

std::vector<Field> fields() {
    return {
        {.name = QStringLiteral("modem_id"), .title = {}, .number = true},
        {.name = QStringLiteral("lock"), .title = QStringLiteral("Lock")},
        {.name = QStringLiteral("status"), .title = {}},
        {.name = QStringLiteral("queue"), .title = QStringLiteral("Queue")},
        {.name = QStringLiteral("queue_status"), .title = QStringLiteral("Status")},
        {.name = QStringLiteral("queue_repeat"), .title = {}, .number = true},
        {.name = QStringLiteral("queue_timeout"), .title = {}, .number = true},
        {.name = QStringLiteral("queue_start_from"), .title = {}, .number = true},
        {.name = QStringLiteral("element"), .title = QStringLiteral("Element")},
        {.name = QStringLiteral("element_status"), .title = QStringLiteral("Status")},
        {.name = QStringLiteral("element_type"), .title = QStringLiteral("Type")},
        {.name = QStringLiteral("element_repeat"),
         .title = QStringLiteral("Repeat"),
         .number = true},
        {.name = QStringLiteral("element_db_id"), .title = {}},
        {.name = QStringLiteral("element_data"), .title = QStringLiteral("Data"), .widest = 60},
    };
}

QJsonArray joined(QJsonArray first, const QJsonArray& second) {
    for (const auto& cell : second) {
        first.append(cell);
    }
    return first;
}

/// As many cells as an element, or a queue, has.
QJsonArray nothing(int count) {
    QJsonArray cells;
    while (cells.size() < count) {
        cells.append(QJsonValue());
    }
    return cells;
}

QJsonArray cellsOf(const QString& id, const model::dl_queues::element& element) {
    return {id,          statusCell(element.status), element.type, element.repeat, element.db_id,
            element.data};
}

void addQueue(RecordOutput& output, const QJsonArray& ofDevice, const QString& name,
              const model::dl_queues::queue& queue) {
    const auto ofQueue = joined(
        ofDevice, {name, statusCell(queue.status), queue.repeat, queue.timeout, queue.start_from});
    if (queue.elements.isEmpty()) {
        output.add(joined(ofQueue, nothing(6)));
    }
    for (auto each = queue.elements.begin(); each != queue.elements.end(); ++each) {
        output.add(joined(ofQueue, cellsOf(each.key(), each.value())));
    }
}

} // namespace

void showQueue(int device, Session& session) {
    const auto record = pull(device, session);
    const auto& queues = record.queues;
    auto output = session.output(fields());
    const QJsonArray ofDevice{device, queues.lock, statusCell(queues.status)};
    for (auto each = queues.dl.begin(); each != queues.dl.end(); ++each) {
        addQueue(output, ofDevice, each.key(), each.value());
    }
    if (queues.dl.isEmpty() && !isEmpty(record)) {
        output.add(joined(ofDevice, nothing(11)));
    }
    output.finish();
    session.results().requireWritten();
    if (isEmpty(record)) {
        session.remarks().line(QStringLiteral("Device %1 has no downlink queues.").arg(device));
    }
}

void clearQueue(int device, Session& session) {
    auto& queues = *session.states().DLqueue();
    attempt(what("deleting", device, session), [&] { queues.Delete(device); });
    // The store does not tell whether the servers did it.
    if (!isEmpty(pull(device, session))) {
        throw Failure(what("deleting", device, session) +
                      QStringLiteral(" failed: they are still there"));
    }
}

} // namespace host
