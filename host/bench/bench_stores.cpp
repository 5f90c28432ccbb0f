#include "host/bench/bench_stores.h"

#include "host/bench/bench_records.h"
#include "host/check/attempt.h"
#include "host/failure.h"
#include "host/records/filters.h"

#include <QDateTime>

#include <algorithm>
#include <iterator>

namespace host {

namespace {

/// Records of a call that is about many.
constexpr int many = 100;
constexpr int few = 10;

/// What is deleted is of a device of its own, so that the others keep what is read.
constexpr int deletedDevice = firstBenchDevice + benchDeviceCount - 1;

QString prefix() {
    return QStringLiteral("kelvro-host-bench");
}

template <class Filter>
Filter newest(int limit) {
    auto filter = anyTime<Filter>(benchDevices());
    filter.limit = limit;
    return filter;
}

model::filter_roll uplinksOf(std::list<int> devices, int limit) {
    auto filter = anyTime<model::filter_roll>(std::move(devices));
    filter.by_time_detected = false;
    filter.limit = limit;
    return filter;
}

template <class Answer>
qint64 count(const Answer& answer) {
    qint64 records = 0;
    for (const auto& [device, list] : *answer) {
        records += static_cast<qint64>(list.size());
    }
    return records;
}

template <class Answer>
bool areBenchs(const Answer& answer) {
    return std::ranges::all_of(*answer, [](const auto& entry) {
        return std::ranges::all_of(entry.second,
                                   [](const auto& record) { return isBenchs(record); });
    });
}

} // namespace

BenchStores::BenchStores(Session& session)
    : m_uplinks(*session.messages().UlMessageRepository()),
      m_commands(*session.messages().DlMessageRepository()),
      m_records(*session.values().EAVRepository()), m_states(session.states()),
      m_queues(*session.states().DLqueue()),
      m_clients(*session.clients().DeviceClientsRepository()),
      m_nextNumber(static_cast<quint64>(QDateTime::currentMSecsSinceEpoch()) << 20) {
    m_states.SetPrefix(prefix());
}

int BenchStores::nextDevice() {
    return firstBenchDevice + m_calls++ % (benchDeviceCount - 1);
}

std::vector<BenchOperation> BenchStores::operations() {
    std::vector<BenchOperation> all;
    for (auto part : {uplinkOperations(), commandOperations(), valueOperations(), eventOperations(),
                      stateOperations(), queueOperations(), clientOperations()}) {
        std::ranges::move(part, std::back_inserter(all));
    }
    return all;
}

std::vector<BenchOperation> BenchStores::uplinkOperations() {
    const auto store = QStringLiteral("uplinks");
    return {
        {store,
         QStringLiteral("SaveMessage"),
         [this] {
             m_uplinks.SaveMessage(benchMessage(nextDevice(), nextNumber()));
             return 1;
         },
         {}},
        {store,
         QStringLiteral("GetMessages"),
         [this] { return count(m_uplinks.GetMessages(uplinksOf(benchDevices(), many))); },
         {}},
        {store, QStringLiteral("DeleteMessages"),
         [this] {
             m_uplinks.DeleteMessages(uplinksOf({deletedDevice}, 0));
             return few;
         },
         [this] {
             for (int i = 0; i < few; ++i) {
                 m_uplinks.SaveMessage(benchMessage(deletedDevice, nextNumber()));
             }
         }},
    };
}

std::vector<BenchOperation> BenchStores::commandOperations() {
    const auto store = QStringLiteral("commands");
    const auto save = [this](int device) {
        auto command = benchCommand(device);
        m_commands.SaveMessage(command);
        m_lastCommand = command.db_id;
    };
    return {
        {store,
         QStringLiteral("SaveMessage"),
         [this, save] {
             save(nextDevice());
             return 1;
         },
         {}},
        {store,
         QStringLiteral("GetById"),
         [this] {
             m_commands.GetById(m_lastCommand);
             return 1;
         },
         {}},
        {store,
         QStringLiteral("GetCommands"),
         [this] { return count(m_commands.GetCommands(newest<model::filter_dl>(few))); },
         {}},
        {store,
         QStringLiteral("GetNotAckCommands"),
         [this] { return count(m_commands.GetNotAckCommands(newest<model::filter_dl>(few))); },
         {}},
        {store,
         QStringLiteral("SetStatus"),
         [this] {
             m_commands.SetStatus(m_lastCommand, model::dl_message::dl_status::WAIT_DATA);
             return 1;
         },
         {}},
        {store,
         QStringLiteral("AckCommand"),
         [this] {
             m_commands.AckCommand(m_lastCommand);
             return 1;
         },
         {}},
        {store, QStringLiteral("DeleteMessages"),
         [this] {
             m_commands.DeleteMessages({deletedDevice}, beginOfTime(), endOfTime());
             return few;
         },
         [save] {
             for (int i = 0; i < few; ++i) {
                 save(deletedDevice);
             }
         }},
    };
}

std::vector<BenchOperation> BenchStores::valueOperations() {
    const auto store = QStringLiteral("values");
    return {
        {store,
         QStringLiteral("SaveValues"),
         [this] {
             m_records.SaveValues(benchValues(nextDevice(), many));
             return many;
         },
         {}},
        {store,
         QStringLiteral("GetValues"),
         [this] { return count(m_records.GetValues(newest<model::filter_eav>(many))); },
         {}},
        {store,
         QStringLiteral("GetValues first and last"),
         [this] {
             auto filter = newest<model::filter_eav>(0);
             filter.first_last = true;
             filter.obis_codes = {benchValues(0, 1).front().obis_code};
             return count(m_records.GetValues(filter));
         },
         {}},
        {store, QStringLiteral("DeleteValues"),
         [this] {
             m_records.DeleteValues(anyTime<model::filter_eav>({deletedDevice}));
             return many;
         },
         [this] { m_records.SaveValues(benchValues(deletedDevice, many)); }},
    };
}

std::vector<BenchOperation> BenchStores::eventOperations() {
    const auto store = QStringLiteral("events");
    return {
        {store,
         QStringLiteral("SaveEvents"),
         [this] {
             m_records.SaveEvents(benchEvents(nextDevice(), many));
             return many;
         },
         {}},
        {store,
         QStringLiteral("GetEvents"),
         [this] { return count(m_records.GetEvents(newest<model::filter_eav>(many))); },
         {}},
        {store, QStringLiteral("DeleteEvents"),
         [this] {
             m_records.DeleteEvents(anyTime<model::filter_eav>({deletedDevice}));
             return many;
         },
         [this] { m_records.SaveEvents(benchEvents(deletedDevice, many)); }},
    };
}

/// What states and queues have in common: they are kept in Redis, and if asked also durably.
std::vector<BenchOperation> BenchStores::keptOperations(
    const QString& store, const std::function<void(int device, bool durably)>& push,
    const std::function<void(int device)>& pull, const std::function<void(int device)>& remove) {
    const auto one = [](const auto& call) {
        return [call] {
            call();
            return qint64{1};
        };
    };
    return {
        {store, QStringLiteral("Push"), one([this, push] { push(nextDevice(), false); }), {}},
        {store,
         QStringLiteral("Push durably"),
         one([this, push] { push(nextDevice(), true); }),
         {}},
        {store, QStringLiteral("Pull"), one([this, pull] { pull(nextDevice()); }), {}},
        {store, QStringLiteral("Delete"), one([remove] { remove(deletedDevice); }),
         [push] { push(deletedDevice, true); }},
    };
}

std::vector<BenchOperation> BenchStores::stateOperations() {
    const auto state = benchState();
    for (const int device : benchDevices()) {
        for (auto value = state.begin(); value != state.end(); ++value) {
            m_states.SetValue(device, value.key(), value.value().toString().toUtf8());
        }
    }
    return keptOperations(
        QStringLiteral("states"),
        [this](int device, bool durably) { m_states.Push(device, durably); },
        [this](int device) { m_states.Pull(device); },
        [this](int device) { m_states.Delete(device); });
}

std::vector<BenchOperation> BenchStores::queueOperations() {
    return keptOperations(
        QStringLiteral("queues"),
        [this](int device, bool durably) { m_queues.Push(device, benchQueues(), durably); },
        [this](int device) { m_queues.Pull(device); },
        [this](int device) { m_queues.Delete(device); });
}

std::vector<BenchOperation> BenchStores::clientOperations() {
    const auto store = QStringLiteral("clients");
    return {
        {store,
         QStringLiteral("GetDeviceClients"),
         [this] {
             m_clients.GetDeviceClients(nextDevice());
             return 1;
         },
         {}},
        {store,
         QStringLiteral("GetDeviceInfo"),
         [this] {
             m_clients.GetDeviceInfo(nextDevice());
             return 1;
         },
         {}},
    };
}

void BenchStores::requireUnused() {
    const auto require = [](bool unused, const char* kind) {
        if (!unused) {
            throw Failure(
                QStringLiteral("the store has %1 of the devices %2 to %3 that no bench stored; it "
                               "would have to delete them and does not run")
                    .arg(QLatin1String(kind))
                    .arg(firstBenchDevice)
                    .arg(firstBenchDevice + benchDeviceCount - 1));
        }
    };
    const auto records = newest<model::filter_eav>(0);
    require(areBenchs(m_uplinks.GetMessages(uplinksOf(benchDevices(), 0))), "uplinks");
    require(areBenchs(m_commands.GetCommands(newest<model::filter_dl>(0))), "commands");
    require(areBenchs(m_records.GetValues(records)), "values");
    require(areBenchs(m_records.GetEvents(records)), "events");
    for (const int device : benchDevices()) {
        m_states.Pull(device);
        require(isBenchs(m_states.GetAll(device)), "states");
        require(isBenchs(m_queues.Pull(device)), "queues");
    }
}

QStringList BenchStores::removeAll() {
    QStringList faults;
    const auto remove = [&](const char* kind, const std::function<void()>& call) {
        try {
            attempt(QLatin1String("removing the bench's ") + QLatin1String(kind), [&] { call(); });
        } catch (const Failure& failure) {
            faults.append(QString::fromUtf8(failure.what()));
        }
    };
    const auto records = newest<model::filter_eav>(0);
    remove("uplinks", [&] { m_uplinks.DeleteMessages(uplinksOf(benchDevices(), 0)); });
    remove("commands",
           [&] { m_commands.DeleteMessages(benchDevices(), beginOfTime(), endOfTime()); });
    remove("values", [&] { m_records.DeleteValues(records); });
    remove("events", [&] { m_records.DeleteEvents(records); });
    const auto list = benchDevices();
    const QList<int> devices(list.begin(), list.end());
    remove("states", [&] { m_states.DeleteDevices(devices, beginOfTime(), endOfTime()); });
    remove("queues", [&] { m_queues.DeleteDevices(devices); });
    return faults;
}

} // namespace host
