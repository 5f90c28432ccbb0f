#include "contract/expectations.h"
#include "contract/rules/rules.h"
#include "contract/slot.h"
#include "contract/trial.h"

#include <array>
#include <utility>

namespace contract {

namespace {

using Info = std::pair<QString, QString>;
using Clients = std::list<QString>;

void standInTheirSlots(Trial& trial) {
    auto* const clients = &trial.clients();
    expectEqual(QStringLiteral("what slot 1 gives"),
                slot<Clients(int)>::call(clients, 1, trial.device()), Clients());
    expectEqual(QStringLiteral("what slot 2 gives"),
                slot<Info(int)>::call(clients, 2, trial.device()), Info());
}

void areNoneOfAnUnknownDevice(Trial& trial) {
    expectEqual(QStringLiteral("the clients of an unknown device"),
                trial.clients().GetDeviceClients(trial.device()), Clients());
    expectEqual(QStringLiteral("protocol and hardware type of an unknown device"),
                trial.clients().GetDeviceInfo(trial.device()), Info());
}

void areThoseOfARegisteredDevice(Trial& trial) {
    if (!trial.registeredDevice()) {
        throw NotApplicable{QStringLiteral(
            "the registry is filled by others: --registered names a device that it knows")};
    }
    const int device = *trial.registeredDevice();
    auto clients = trial.clients().GetDeviceClients(device);
    const auto info = trial.clients().GetDeviceInfo(device);
    expect(!clients.empty() || info != Info(),
           QStringLiteral("clients, a protocol or a hardware type"),
           QStringLiteral("none of them"));
    const auto other = trial.makeClients();
    auto again = other->DeviceClientsRepository()->GetDeviceClients(device);
    clients.sort();
    again.sort();
    expectEqual(QStringLiteral("the clients that another object finds"), again, clients);
    expectEqual(QStringLiteral("protocol and hardware type that another object finds"),
                other->DeviceClientsRepository()->GetDeviceInfo(device), info);
}

constexpr std::array rules{
    Rule{"clients.slots", "Slots 1 and 2 are GetDeviceClients and GetDeviceInfo",
         standInTheirSlots},
    Rule{"clients.unknown", "An unknown device has no clients and two empty texts",
         areNoneOfAnUnknownDevice},
    Rule{"clients.registered", "Every object finds the same of a device that the registry knows",
         areThoseOfARegisteredDevice},
};

} // namespace

std::span<const Rule> clientRules() {
    return rules;
}

} // namespace contract
