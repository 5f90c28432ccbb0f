#pragma once

#include "host/bench/measurement.h"
#include "host/session/session.h"
#include "interfaces/idevice_clients_repository.h"
#include "interfaces/idl_app_message_repository.h"
#include "interfaces/idriver_dl_queue.h"
#include "interfaces/ieav_repository.h"
#include "interfaces/iul_app_message_repository.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace host {

/// One operation of a store on the benchmark's devices.
struct BenchOperation {
    QString store;
    QString name;
    /// Makes one call and gives how many records it was about.
    std::function<qint64()> call;
    /// Before each call, not measured.
    std::function<void()> prepare;
};

/// The stores as a benchmark uses them.
class BenchStores {
public:
    /// Opens them. Throws Failure if one cannot be opened.
    explicit BenchStores(Session& session);

    /// All operations that a store has, in an order in which each finds what it needs. They refer
    /// to this object.
    std::vector<BenchOperation> operations();

    /// Throws Failure, and changes nothing, if the stores have records of the benchmark's devices
    /// that are not a benchmark's.
    void requireUnused();

    /// Removes all of the benchmark's devices. Gives what could not be removed, and why.
    QStringList removeAll();

private:
    quint64 nextNumber() { return m_nextNumber++; }
    int nextDevice();

    std::vector<BenchOperation> uplinkOperations();
    std::vector<BenchOperation> commandOperations();
    std::vector<BenchOperation> valueOperations();
    std::vector<BenchOperation> eventOperations();
    std::vector<BenchOperation>
    keptOperations(const QString& store, const std::function<void(int device, bool durably)>& push,
                   const std::function<void(int device)>& pull,
                   const std::function<void(int device)>& remove);
    std::vector<BenchOperation> stateOperations();
    std::vector<BenchOperation> queueOperations();
    std::vector<BenchOperation> clientOperations();

    interfaces::IULAPPMessageRepository& m_uplinks;
    interfaces::IDLAPPMessageRepository& m_commands;
    interfaces::IEAVRepository& m_records;
    interfaces::IDriverState& m_states;
    interfaces::IDriverDLqueue& m_queues;
    interfaces::IDeviceClientsRepository& m_clients;
    quint64 m_nextNumber;
    int m_calls = 0;
    QString m_lastCommand;
};

} // namespace host
