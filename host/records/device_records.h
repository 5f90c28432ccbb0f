#pragma once

#include "model/dl_queues.h"
#include "model/message.h"

#include <QJsonObject>
#include <QString>

#include <set>
#include <vector>

namespace host {

/// The key/value state that a driver keeps of a device.
struct DeviceState {
    int modem_id = 0;
    QJsonObject values;
};

/// The downlink queues of a device.
struct DeviceQueues {
    int modem_id = 0;
    model::dl_queues queues;
};

/// What the client registry knows of a device.
struct DeviceEntry {
    int modem_id = 0;
    std::set<QString> clients;
    QString protocol;
    QString hw_type;
};

/// One record for each device of the messages. A state and each queue element carry the demo's mark
/// in their member "source"; the demo is one of the clients of an entry.
std::vector<DeviceState> buildStates(const std::vector<model::message>& messages);
std::vector<DeviceQueues> buildQueues(const std::vector<model::message>& messages);
std::vector<DeviceEntry> buildEntries(const std::vector<model::message>& messages);

/// Whether the record says nothing, as that of a device which has none.
bool isEmpty(const DeviceState& state);
bool isEmpty(const DeviceQueues& record);
bool isEmpty(const DeviceEntry& entry);

} // namespace host
