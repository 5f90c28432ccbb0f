#include "host/device/client_entry.h"

#include "host/check/attempt.h"
#include "host/input/settings.h"
#include "host/records/device_records.h"
#include "interfaces/idevice_clients_repository.h"

namespace host {

namespace {

DeviceEntry lookUp(int device, Session& session) {
    auto& registry = *session.clients().DeviceClientsRepository();
    const auto step = QStringLiteral("reading the registry's entry of device %1 at %2")
                          .arg(device)
                          .arg(redisName(session.settings()));
    return attempt(step, [&] {
        const auto clients = registry.GetDeviceClients(device);
        const auto [protocol, hardware] = registry.GetDeviceInfo(device);
        return DeviceEntry{device, {clients.begin(), clients.end()}, protocol, hardware};
    });
}

} // namespace

void showClients(int device, Session& session) {
    const auto entry = lookUp(device, session);
    auto output = session.output({
        {.name = QStringLiteral("modem_id"), .title = QStringLiteral("Device"), .number = true},
        {.name = QStringLiteral("protocol"), .title = QStringLiteral("Protocol")},
        {.name = QStringLiteral("hw_type"), .title = QStringLiteral("Hardware type")},
        {.name = QStringLiteral("clients"), .title = QStringLiteral("Clients"), .widest = 200},
    });
    if (!isEmpty(entry)) {
        QJsonArray clients;
        for (const auto& client : entry.clients) {
            clients.append(client);
        }
        output.add({device, entry.protocol, entry.hw_type, clients});
    }
    output.finish();
    session.results().requireWritten();
    if (isEmpty(entry)) {
        session.remarks().line(
            QStringLiteral("The registry knows nothing of device %1.").arg(device));
    }
}

} // namespace host
