#include "contract/expectations.h"
#include "contract/rules/rules.h"
#include "contract/slot.h"
#include "contract/trial.h"

#include <array>

namespace contract {

namespace {

using Status = enum model::dl_queues::status;

/// Queues with every member set, and every status.
model::dl_queues sample(int number) {
    model::dl_queues::element element;
    element.data = {{QStringLiteral("n"), number},
                    {QStringLiteral("text"), QStringLiteral("\u03a9")}};
    element.type = QStringLiteral("command");
    element.db_id = QStringLiteral("0123456789abcdef01234567");
    element.status = Status::FAIL;
    element.repeat = number;
    model::dl_queues::queue queue;
    queue.elements = {{QStringLiteral("first"), element}, {QStringLiteral("second"), {}}};
    queue.repeat = 2;
    queue.timeout = 60;
    queue.start_from = number;
    queue.status = Status::DONE;
    model::dl_queues queues;
    queues.dl = {{QStringLiteral("Z\u00e4hler"), queue}, {QStringLiteral("empty"), {}}};
    queues.lock = true;
    queues.status = Status::WAIT;
    return queues;
}

void expectQueues(interfaces::IDriverDLqueue& queues, int device,
                  const model::dl_queues& expected) {
    expectSame(host::DeviceQueues{device, expected},
               host::DeviceQueues{device, queues.Pull(device)});
}

/// What another object finds.
void expectStored(Trial& trial, int device, const model::dl_queues& expected) {
    const auto other = trial.makeStates();
    expectQueues(expectObject(QStringLiteral("the downlink queue"), other->DLqueue()), device,
                 expected);
}

void standInTheirSlots(Trial& trial) {
    auto* const queues = &trial.queues();
    const int device = trial.device();
    slot<bool(int, const model::dl_queues&, bool)>::call(queues, 2, device, sample(1), true);
    expectSame(host::DeviceQueues{device, sample(1)},
               host::DeviceQueues{device, slot<model::dl_queues(int)>::call(queues, 1, device)});
    slot<bool(int)>::call(queues, 3, device);
    expectQueues(*queues, device, {});
    queues->Push(device, sample(2), false);
    slot<bool(const QList<int>&)>::call(queues, 4, {device});
    expectQueues(*queues, device, {});
}

void beginEmpty(Trial& trial) {
    expectQueues(trial.queues(), trial.device(), {});
}

void comeBackEqual(Trial& trial) {
    trial.queues().Push(trial.device(0), sample(1), false);
    trial.queues().Push(trial.device(1), sample(2), false);
    expectStored(trial, trial.device(0), sample(1));
    expectStored(trial, trial.device(1), sample(2));
}

void comeBackEqualDurably(Trial& trial) {
    trial.queues().Push(trial.device(), sample(1), true);
    expectStored(trial, trial.device(), sample(1));
}

void areReplaced(Trial& trial) {
    for (const bool persist : {false, true}) {
        model::dl_queues other;
        other.dl.insert(QStringLiteral("other"), {});
        trial.queues().Push(trial.device(), sample(1), persist);
        trial.queues().Push(trial.device(), other, persist);
        expectQueues(trial.queues(), trial.device(), other);
    }
}

void areDeleted(Trial& trial) {
    for (const bool persist : {false, true}) {
        trial.queues().Push(trial.device(0), sample(1), persist);
        trial.queues().Push(trial.device(1), sample(2), persist);
        trial.queues().Delete(trial.device(0));
        expectQueues(trial.queues(), trial.device(0), {});
        expectQueues(trial.queues(), trial.device(1), sample(2));
    }
}

void areDeletedOfDevices(Trial& trial) {
    for (int index = 0; index < 3; ++index) {
        trial.queues().Push(trial.device(index), sample(index), true);
    }
    trial.queues().DeleteDevices({trial.device(0), trial.device(2)});
    expectStored(trial, trial.device(0), {});
    expectStored(trial, trial.device(1), sample(1));
    expectStored(trial, trial.device(2), {});
}

void sayYes(Trial& trial) {
    auto& queues = trial.queues();
    const int device = trial.device();
    const bool all = queues.Push(device, {}, false) && queues.Push(device, {}, true) &&
                     queues.Delete(device) && queues.Delete(device) && queues.DeleteDevices({}) &&
                     queues.DeleteDevices({device});
    expect(all, QStringLiteral("Push, Delete and DeleteDevices give true"),
           QStringLiteral("false"));
}

void areApartFromStates(Trial& trial) {
    auto& states = trial.states();
    const int device = trial.device();
    states.SetValue(device, QStringLiteral("name"), 1.5);
    const QJsonObject state = states.GetAll(device);
    states.Push(device, true);
    trial.queues().Push(device, sample(1), true);
    states.Pull(device);
    expectEqual(QStringLiteral("the state of a device with queues"), states.GetAll(device), state);
    states.Delete(device);
    expectQueues(trial.queues(), device, sample(1));
}

constexpr std::array rules{
    Rule{"queues.slots", "Slots 1 to 4 are Pull, Push, Delete and DeleteDevices",
         standInTheirSlots},
    Rule{"queues.empty", "A device that nobody knows has an empty record", beginEmpty},
    Rule{"queues.equal", "What is pushed another object pulls, equal in every member",
         comeBackEqual},
    Rule{"queues.durably", "What is pushed durably is pulled equal as well", comeBackEqualDurably},
    Rule{"queues.durable-copy", "What is pushed durably outlives the working store",
         durableCopyShowsNowhere},
    Rule{"queues.replace", "Pushing replaces all that a device had", areReplaced},
    Rule{"queues.delete", "Deleting takes all that this device has, and nothing of another",
         areDeleted},
    Rule{"queues.delete-devices", "DeleteDevices deletes each of them", areDeletedOfDevices},
    Rule{"queues.true", "Push, Delete and DeleteDevices give true, also for unknown devices",
         sayYes},
    Rule{"queues.states", "A device's queues and its state do not touch each other",
         areApartFromStates},
};

} // namespace

std::span<const Rule> downlinkQueueRules() {
    return rules;
}

} // namespace contract
