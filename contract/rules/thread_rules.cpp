#include "contract/kinds.h"
#include "contract/rules/rules.h"

#include <array>
#include <future>
#include <latch>
#include <memory>
#include <optional>
#include <vector>

namespace contract {

namespace {

/// Runs the body on a thread for each of the rule's devices, all of which begin together, and
/// throws what one of them threw; it is given the thread's number, counted from 0.
template <class Body>
void onThreadsAtOnce(const Body& body) {
    std::latch begin{Trial::devices};
    std::vector<std::future<void>> running;
    running.reserve(Trial::devices);
    for (int number = 0; number < Trial::devices; ++number) {
        running.push_back(std::async(std::launch::async, [&, number] {
            begin.arrive_and_wait();
            body(number);
        }));
    }
    for (auto& thread : running) {
        thread.wait();
    }
    for (auto& thread : running) {
        thread.get();
    }
}

/// Runs the body on a thread of its own, and waits for it.
template <class Body>
void onAThread(const Body& body) {
    std::async(std::launch::async, body).get();
}

/// Objects for the rule's device of that number.
class Worker {
public:
    Worker(interfaces::IDatabaseFactory& factory, const Trial& trial, int number)
        : m_trial(trial), m_device(trial.device(number)),
          m_messages(factory.CreateMessageDatabaseInst(trial.settings(), nullptr)),
          m_eav(factory.CreateEavDatabaseInst(trial.settings(), nullptr)),
          m_states(factory.CreateDriverStateInst(trial.settings(), nullptr)),
          m_clients(factory.CreateClientDatabaseInst(trial.settings(), nullptr)) {
        m_states->SetPrefix(trial.prefix());
    }

    void store(int number) {
        m_messages->UlMessageRepository()->SaveMessage(Uplinks::record(m_device, number, number));
        m_eav->EAVRepository()->SaveEvents({Events::record(m_device, number, number)});
        m_states->SetValue(m_device, QStringLiteral("last"), number);
        m_states->Push(m_device, false);
        m_clients->DeviceClientsRepository()->GetDeviceClients(m_device);
    }

    /// Expects to find what `count` calls of store() have stored, 1 to `count`.
    void expectToFind(int count) {
        Numbers expected;
        for (int number = 1; number <= count; ++number) {
            expected[m_device].push_back(number);
        }
        auto uplinks = Uplinks::everything(m_trial);
        uplinks.modem_ids = {m_device};
        expectFound<Uplinks>(m_messages->UlMessageRepository()->GetMessages(uplinks), expected);
        auto events = Events::everything(m_trial);
        events.modem_ids = {m_device};
        expectFound<Events>(m_eav->EAVRepository()->GetEvents(events), expected);
        m_states->Pull(m_device);
        expectEqual(QStringLiteral("the state"), m_states->GetAll(m_device),
                    {{QStringLiteral("last"), count}});
    }

private:
    const Trial& m_trial;
    int m_device;
    std::shared_ptr<interfaces::IMessagesDatabase> m_messages;
    std::shared_ptr<interfaces::IEAVDatabase> m_eav;
    std::shared_ptr<interfaces::IDriverState> m_states;
    std::shared_ptr<interfaces::IDeviceClientsDatabase> m_clients;
};

void workSideBySide(Trial& trial) {
    constexpr int records = 5;
    // Fetched on one thread, for loading has no lock.
    auto& factory = trial.plugin().factory();
    onThreadsAtOnce([&](int number) {
        Worker worker(factory, trial, number);
        for (int record = 1; record <= records; ++record) {
            worker.store(record);
            worker.expectToFind(record);
        }
    });
}

void areMadeSideBySide(Trial& trial) {
    constexpr int rounds = 3;
    auto& factory = trial.plugin().factory();
    onThreadsAtOnce([&](int number) {
        for (int round = 0; round < rounds; ++round) {
            const Worker worker(factory, trial, number);
        }
    });
}

void areHandedOn(Trial& trial) {
    auto& factory = trial.plugin().factory();
    std::optional<Worker> worker;
    onAThread([&] { worker.emplace(factory, trial, 0); });
    onAThread([&] { worker->store(1); });
    onAThread([&] {
        worker->store(2);
        worker->expectToFind(2);
    });
    onAThread([&] { worker.reset(); });
}

constexpr std::array rules{
    Rule{"threads.factory", "The factory's four calls may run on several threads at once",
         areMadeSideBySide},
    Rule{"threads.objects", "Threads may work at once, each with objects of its own",
         workSideBySide},
    Rule{"threads.handed-on",
         "An object may be made on one thread, used on others and destroyed on another one",
         areHandedOn},
};

} // namespace

std::span<const Rule> threadRules() {
    return rules;
}

} // namespace contract
